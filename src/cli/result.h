#pragma once

#include "text/text_sink.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace veldmap::cli {

class Messages;

/// The result of a command on the standard output, printed as it is made. It ends where it can't be written and where
/// it would be more than it may.
class Result final : public TextSink {
public:
    Result(qint64 mostBytes, Messages &messages);

    bool take(QByteArrayView piece) override;
    bool print(const QString &text) { return take(QByteArrayView(text.toUtf8())); }
    /// Prints what is still to be printed; false when not all of the result was, of which one error is told.
    [[nodiscard]] bool finish();

private:
    qint64 m_most;
    qint64 m_left;
    Messages &m_messages;
    bool m_isTerminal;
    bool m_isTooLarge = false;
    int m_error = 0; ///< of the system
};

/// A list of JSON objects, printed one by one as QJsonDocument prints a list.
class ResultList {
public:
    explicit ResultList(Result &result) : m_result(result) {}

    bool append(const QJsonObject &object);
    /// Ends the list, also an empty one.
    void finish();

private:
    Result &m_result;
    bool m_isEmpty = true;
};

} // namespace veldmap::cli
