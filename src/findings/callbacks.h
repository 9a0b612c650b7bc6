#pragma once

#include <QString>

/// Receives one message as NUL-terminated UTF-8 text, which lives only during the call. May be null.
using VMMessageCallback = void (*)(const char *text);

namespace veldmap {

/// The three callbacks of a load, which always travel together.
struct Callbacks {
    VMMessageCallback log = nullptr;
    VMMessageCallback error = nullptr;
    VMMessageCallback warning = nullptr;
};

inline void sendMessage(VMMessageCallback callback, const QString &text)
{
    if (callback)
        callback(text.toUtf8().constData());
}

/// "FILE:LINE:COLUMN:TEXT", the form of all messages that have a place.
inline QString placedMessage(const QString &file, qint64 line, qint64 column, const QString &text)
{
    return QStringLiteral("%1:%2:%3:%4").arg(file, QString::number(line), QString::number(column), text);
}

} // namespace veldmap
