#pragma once

#include <veldmap/veldmap_export.h>

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <optional>

/// The lines that are spoken with a program that makes accesses for us:
///
///     r 0x40004008 4                  answered by a number, 0x00000003 or 3,
///     w 0x40004008 4 0x00000003       answered by ok,
///
/// and each of them, where nothing can be accessed so, by "error" and words.
namespace veldmap {

QByteArray readLineOf(quint32 address, int width);
QByteArray writeLineOf(quint32 address, int width, quint32 value);

/// What a program has answered.
struct ProgramAnswer {
    std::optional<quint32> value; ///< of a read
    bool isOk = false;            ///< of a write
    QString error = {};           ///< why nothing was accessed
};

/// The answer that \a line, without its end, is; nothing when it is none.
VELDMAP_EXPORT std::optional<ProgramAnswer> programAnswerOf(QByteArrayView line);

} // namespace veldmap
