#pragma once

#include "loading/description_files.h"

#include <QHash>
#include <QSet>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace veldmap {

/// Reads files ahead of the load that asks for them, on threads of its own: when a file is cut into tags, the files
/// that it includes are known.
///
/// What a file gives does not depend on when it is read, so the load hears and makes the same as without. Only includes
/// that are sure to be followed are read, and only plain files. What stands ready is bounded in number and bytes.
class ReadAhead final : public DescriptionFiles {
public:
    /// Reads on up to \a threads threads besides the caller's, which also let \a listener study what they read if it is
    /// not null. Where the system gives none, the caller reads all.
    ReadAhead(int threads, const DocumentListener *listener);
    ReadAhead(const ReadAhead &) = delete;
    ReadAhead &operator=(const ReadAhead &) = delete;
    ~ReadAhead() override;

    std::unique_ptr<DescriptionFile> read(const FileName &name) override;

private:
    using File = std::unique_ptr<DescriptionFile>;

    void work();
    bool canBegin() const;
    void expectIncludesOf(const DescriptionFile &file, const FileName &name);

    const DocumentListener *const m_listener;
    std::mutex m_mutex; ///< of all below but the threads
    std::condition_variable m_changed;
    std::deque<FileName> m_expected; ///< in the order in which the load will ask
    QSet<QString> m_known;           ///< paths that were expected or asked for
    QSet<QString> m_running;         ///< paths that a thread is reading
    std::vector<std::pair<QString, File>> m_ready;
    qint64 m_readyBytes = 0;
    bool m_isOver = false;
    std::vector<std::jthread> m_threads;
};

} // namespace veldmap
