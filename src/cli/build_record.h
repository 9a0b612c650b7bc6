#pragma once

#include "cli/writing.h"
#include "files/file_stamp.h"
#include "findings/finding.h"
#include "loading/load.h"

#include <QByteArray>
#include <QStringList>

#include <vector>

namespace veldmap {
struct OutputFiles;
}

namespace veldmap::cli {

/// What a build with the same options has found to be up to date: every file that it read, and every file that it would
/// write and that held the same already. As long as the stamps of all of them are what they were, texts need not be
/// made and compared again.
///
/// It stands in a file of its own below $XDG_CACHE_HOME/veldmap, which may be deleted at any time and is kept up by
/// keep() alone. Where that can't be read or written, nothing is told and every build does the whole work. So it does
/// when anything is in doubt: a stamp that differs, a file on a device with another machine's clock, another program.
class BuildRecord {
public:
    /// For a build with \a options that is about to begin.
    BuildRecord(const Options &options, const std::vector<WantedOutput> &wanted);

    /// Reads what was kept; whether all files are still as they were.
    [[nodiscard]] bool isCurrent();

    // What was kept, when it is current.

    /// Whether a load has read the same files with the same stamps.
    bool hasRead(const ReadFiles &files) const;
    /// The files of all outputs.
    const QStringList &outputs() const { return m_outputs; }
    const QStringList &copied() const { return m_copied; }
    /// The paths for a list of outputs, when \a options ask for one.
    const QStringList &listed() const { return m_listed; }
    /// Tells \a sink what the texts were found to be lacking.
    void tellFindings(Sink &sink) const;

    // What is to be kept.

    void add(const OutputFiles &files);
    void add(const Finding &finding) { m_findings.append(finding); }
    /// Keeps what was added, if all of it is certain: that nothing was written or failed, and that all files are older
    /// than the build.
    void keep(const ReadFiles &files, const QStringList &listed);

private:
    QByteArray toBytes(const std::vector<FileStamp> &stamps) const;
    bool takeBytes(const QByteArray &bytes, std::vector<FileStamp> &stamps);
    /// The stamps of all files but those that the load reads.
    std::vector<FileStamp> stampsOfOthers() const;

    QByteArray m_key;
    QString m_file; ///< empty when there is no place for it
    qint64 m_begin;
    ReadFiles m_read;
    QStringList m_outputs;
    QStringList m_copied;
    QStringList m_listed;
    QList<Finding> m_findings;
    bool m_isCertain = true;
};

} // namespace veldmap::cli
