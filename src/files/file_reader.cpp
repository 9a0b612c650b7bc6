#include "files/file_reader.h"

#include <QFile>

namespace veldmap {

QByteArray readAtMost(QFile &file, qint64 limit)
{
    if (file.size() > 0 && file.size() <= limit)
        return file.readAll();
    // What does not tell its size, a pipe, ends at the limit.
    constexpr qint64 kPiece = 1024 * 1024;
    QByteArray bytes;
    for (QByteArray piece = file.read(kPiece); !piece.isEmpty() && bytes.size() <= limit; piece = file.read(kPiece))
        bytes += piece;
    bytes.truncate(limit + 1);
    return bytes;
}

} // namespace veldmap
