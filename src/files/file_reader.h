#pragma once

#include <QByteArray>
#include <QString>

class QFile;

namespace veldmap {

/// All that the open \a file holds, or one byte more than \a limit where it holds more.
QByteArray readAtMost(QFile &file, qint64 limit);

/// What is said of a document beyond the limit of its size.
QString tooLargeError();

} // namespace veldmap
