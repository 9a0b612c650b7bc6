#include "findings/source_text.h"

#include <QStringDecoder>

#include <algorithm>

namespace veldmap {

namespace {

/// The encoding that the declaration in front of a document names; UTF-8 without one.
std::optional<QStringConverter::Encoding> declaredEncoding(const QByteArray &bytes)
{
    constexpr qsizetype kDeclaration = 200; // bytes that hold any declaration
    const QByteArray front = bytes.first(qMin(bytes.size(), kDeclaration));
    const qsizetype end = front.startsWith("<?xml") ? front.indexOf("?>") : -1;
    const qsizetype word = end < 0 ? -1 : front.first(end).indexOf("encoding");
    if (word < 0)
        return QStringConverter::Utf8;
    const QByteArray rest = front.first(end).sliced(word);
    const qsizetype open =
        std::find_if(rest.begin(), rest.end(), [](char c) { return c == '"' || c == '\''; }) - rest.begin();
    const qsizetype close = open < rest.size() ? rest.indexOf(rest[open], open + 1) : -1;
    return close < 0 ? std::nullopt
                     : QStringConverter::encodingForName(rest.sliced(open + 1, close - open - 1).constData());
}

} // namespace

SourceText::SourceText(const QString &text) : m_text(text), m_begins({0})
{
    for (qsizetype i = 0; i < m_text.size(); ++i) {
        const bool isPair = m_text[i] == u'\r' && i + 1 < m_text.size() && m_text[i + 1] == u'\n';
        if (isPair)
            ++i;
        if (isPair || m_text[i] == u'\n' || m_text[i] == u'\r')
            m_begins += i + 1;
    }
}

std::optional<SourceText> SourceText::ofBytes(const QByteArray &bytes)
{
    std::optional<QStringConverter::Encoding> encoding = QStringConverter::encodingForData(bytes);
    if (!encoding)
        encoding = declaredEncoding(bytes);
    if (!encoding)
        return {};
    QStringDecoder decoder(*encoding);
    const QString text = decoder(bytes);
    if (decoder.hasError())
        return {};
    return SourceText(text);
}

qsizetype SourceText::offsetOf(qint64 line, qint64 column) const
{
    if (line < 1 || line > m_begins.size())
        return -1;
    const qsizetype begin = beginOf(line);
    return begin + qBound<qint64>(0, column - 1, endOf(line) - begin);
}

qint64 SourceText::lineAt(qsizetype offset) const
{
    return std::upper_bound(m_begins.begin(), m_begins.end(), offset) - m_begins.begin();
}

qsizetype SourceText::endOf(qint64 line) const
{
    if (line == m_begins.size())
        return m_text.size();
    qsizetype end = m_begins.at(line) - 1;
    if (end > beginOf(line) && m_text[end] == u'\n' && m_text[end - 1] == u'\r')
        --end;
    return end;
}

} // namespace veldmap
