#include "cli/result.h"

#include "cli/messages.h"
#include "cli/program_rules.h"
#include "files/paths.h"

#include <QJsonDocument>

#include <cerrno>
#include <cstdio>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

Result::Result(qint64 mostBytes, Messages &messages)
    : m_most(mostBytes), m_left(mostBytes), m_messages(messages), m_isTerminal(isatty(STDOUT_FILENO) != 0)
{
    messages.clearProgress();
}

bool Result::take(QByteArrayView piece)
{
    m_isTooLarge = m_isTooLarge || piece.size() > m_left;
    if (m_isTooLarge || m_error)
        return false;
    m_left -= piece.size();
    QByteArray shown;
    if (m_isTerminal) {
        shown = harmlessText(QString::fromUtf8(piece), true).toUtf8();
        piece = shown;
    }
    const auto size = static_cast<std::size_t>(piece.size());
    errno = 0;
    if (std::fwrite(piece.data(), 1, size, stdout) != size)
        m_error = errno ? errno : EIO;
    return m_error == 0;
}

bool Result::finish()
{
    errno = 0;
    if (std::fflush(stdout) != 0 && m_error == 0)
        m_error = errno ? errno : EIO;
    if (m_error)
        m_messages.tell(rules::kOutput, {systemText(m_error)});
    else if (m_isTooLarge)
        m_messages.tell(rules::kResultTooLarge, {QString::number(m_most)});
    return m_error == 0 && !m_isTooLarge;
}

bool ResultList::append(const QJsonObject &object)
{
    QByteArray text = QJsonDocument(object).toJson();
    text.chop(1);
    text.replace('\n', "\n    "); // no text in it holds a line feed
    text.prepend(m_isEmpty ? "[\n    " : ",\n    ");
    m_isEmpty = false;
    return m_result.take(text);
}

void ResultList::finish()
{
    m_result.take(QByteArrayView(m_isEmpty ? "[\n]\n" : "\n]\n"));
}

} // namespace veldmap::cli
