#pragma once

#include <veldmap/veldmap_export.h>

#include <QByteArray>

class QFile;

namespace veldmap {

/// All that the open \a file holds, or one byte more than \a limit where it holds more.
VELDMAP_EXPORT QByteArray readAtMost(QFile &file, qint64 limit);

} // namespace veldmap
