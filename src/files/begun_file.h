#pragma once

#include "files/file_writer.h"
#include "text/text_sink.h"

#include <sys/types.h>

namespace veldmap {

/// A new file that will take the place of another one, and is gone if it never does.
///
/// It lies in the directory of the other under a name of its own, ".veldmap-PROCESS-NUMBER.tmp", and is locked while
/// somebody writes it. So what a killed process leaves behind is told from what another one is writing. Paths are in
/// the system's own encoding, numbers of errors those of the system.
class BegunFile {
public:
    BegunFile() = default;
    BegunFile(const BegunFile &) = delete;
    BegunFile &operator=(const BegunFile &) = delete;
    ~BegunFile();

    /// Makes the file in \a directory; 0, or why it can't be made.
    int open(const QByteArray &directory);
    /// Gives it the permissions \a mode, as far as the system lets it.
    void setPermissions(mode_t mode);
    /// Writes \a content; 0, or why it can't be written.
    int write(const TextSource &content);
    /// Puts the file in the place of \a target; 0, or why it can't be put there.
    int moveOver(const QByteArray &target);

private:
    struct Slot;
    static Slot table[];

    int tryOpen(const QByteArray &path);
    void forget();

    friend void removeBegunFiles() noexcept;

    QByteArray m_path; ///< empty when there is no file to remove
    Slot *m_slot = nullptr;
    int m_descriptor = -1;
};

/// Writes \a content to \a descriptor; 0, or why not all was written. Where the content ends early that is ECANCELED.
int writeAll(int descriptor, const TextSource &content);

} // namespace veldmap
