#pragma once

#include <veldmap/veldmap_export.h>

#include <QByteArray>
#include <QString>

namespace veldmap {

/// Puts a file with \a content in the place of \a path in one step: a reader finds the old file or the whole new one.
/// Where the directory takes no new file, the old one is written over. False when neither is possible; \a reason then
/// tells why, and \a opened, if not null, whether a file could at least be opened. Nothing waits for the disk, as
/// QSaveFile does for every file: what is written here can be made again.
VELDMAP_EXPORT bool writeWholeFile(const QString &path, const QByteArray &content, QString &reason,
                                   bool *opened = nullptr);

} // namespace veldmap
