#pragma once

#include <veldmap/veldmap_export.h>

#include <QList>
#include <QString>

#include <optional>

namespace veldmap {

/// A piece of memory that a file gives.
struct UioMap {
    qint64 address = 0;      ///< of its first byte on the chip
    qint64 size = 0;         ///< bytes
    qint64 fileOffset = 0;   ///< where mapping begins in the file
    qint64 displacement = 0; ///< its first byte, counted from there
    bool isNumbered = false; ///< the offset is the map's number in pages, and the rest of it lies behind that one
};

/// The maps of a device that a driver in user space works with, as \a directory in the system's files describes them.
/// With \a address the first one lies there instead of at its physical address. What lies beyond 32 bits is left out.
VELDMAP_EXPORT QList<UioMap> uioMapsOf(const QString &directory, std::optional<quint32> address);

} // namespace veldmap
