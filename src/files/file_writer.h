#pragma once

#include <veldmap/veldmap_export.h>

#include <QByteArray>
#include <QString>

#include <functional>

namespace veldmap {

class TextSink;

/// What became of a file that was to be written.
struct WriteResult {
    enum Outcome {
        Written,   ///< a new file is in its place, or a pipe or a device has taken the content
        InPlace,   ///< written over the old content, as the directory takes no other file
        Unchanged, ///< it was the same before
        Failed,
    };
    Outcome outcome = Failed;
    QString reason = {};   ///< why it failed or was written in place, in the system's words
    bool isOpened = false; ///< whether a file could at least be opened
};

/// How a file is written.
struct WriteOptions {
    bool keepsSame = false;   ///< one that holds the same already is left alone, with its time
    QString linksWithin = {}; ///< a link that leads out of this directory is replaced; if empty, all are followed
};

/// Puts a file with \a content in the place of \a path in one step: a reader finds the old file or the whole new one,
/// and where it fails nothing is left of the new one. Only where the directory takes no other file is the old one
/// written over. Nothing waits for the disk: what is written here can be made again.
VELDMAP_EXPORT WriteResult writeWholeFile(const QString &path, const QByteArray &content,
                                          const WriteOptions &options = {});

/// The same of a large file, whose content \a text gives in pieces, more than once. Where it gives only a part of it
/// the file is not written, which fails.
VELDMAP_EXPORT WriteResult writeLargeFile(const QString &path, const std::function<bool(TextSink &sink)> &text,
                                          const WriteOptions &options = {});

/// Removes what processes that were killed have begun to write in the directory \a path. What others are writing now
/// stays.
VELDMAP_EXPORT void removeLeftovers(const QString &path);

/// Removes the files that this process has begun and not yet put in their places, for a process that is about to end:
/// whoever begins one from now on waits for that end. May be called by the handler of a signal.
VELDMAP_EXPORT void removeBegunFiles() noexcept;

} // namespace veldmap
