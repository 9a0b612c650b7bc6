#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>

namespace veldmap {

/// What the system says of a file without its being read. A file whose stamp is the same holds the same, as long as
/// isOlderThan() held of it: whatever writes to a file, replaces it or sets its times back changes the time of change.
///
/// Times are nanoseconds since 1970.
struct FileStamp {
    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = -1; ///< -1 for what is no plain file, or not there
    qint64 modified = 0;
    qint64 changed = 0; ///< the time of the last change of any kind, which nobody can set

    bool isFile() const { return size >= 0; }
    /// Whether the file was last changed so long before \a time that a change since would have got another time. It
    /// takes clocks of file systems as they are; where such a clock may be another machine's, no file is.
    VELDMAP_EXPORT bool isOlderThan(qint64 time) const;

    bool operator==(const FileStamp &) const = default;
};

/// The stamp of the file that \a path leads to.
VELDMAP_EXPORT FileStamp stampOf(const QString &path);

/// The time as stamps have it; always 0 on systems without stamps, where no file is older.
VELDMAP_EXPORT qint64 stampTime();

} // namespace veldmap
