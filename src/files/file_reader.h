#pragma once

#include <QByteArray>

class QFile;

namespace veldmap {

/// All that the open \a file holds, or one byte more than \a limit where it holds more.
QByteArray readAtMost(QFile &file, qint64 limit);

} // namespace veldmap
