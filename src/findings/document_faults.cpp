#include "findings/document_faults.h"

#include "findings/source_text.h"

#include <algorithm>
#include <optional>
#include <vector>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

// Bytes

/// How many bytes the character at \a at takes in UTF-8; 0 where they are none.
qsizetype lengthOfCharacter(const QByteArray &bytes, qsizetype at)
{
    const auto byteAt = [&](qsizetype place) -> quint32 {
        return place < bytes.size() ? static_cast<quint8>(bytes[place]) : 0;
    };
    const quint32 first = byteAt(at);
    if (first < 0x80)
        return 1;
    const qsizetype length = first >= 0xF5 ? 0 : first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC2 ? 2 : 0;
    quint32 code = length == 0 ? 0 : first & (0xFFu >> (length + 1));
    for (qsizetype more = 1; more < length; ++more) {
        if ((byteAt(at + more) & 0xC0) != 0x80)
            return 0;
        code = code << 6 | (byteAt(at + more) & 0x3F);
    }
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    const bool isTooLong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    return isSurrogate || isTooLong || code > 0x10FFFF ? 0 : length;
}

/// Where the first bytes stand that are no UTF-8; -1 when all are.
qsizetype firstWrongByte(const QByteArray &bytes)
{
    qsizetype at = 0;
    while (at < bytes.size()) {
        const qsizetype length = lengthOfCharacter(bytes, at);
        if (length == 0)
            return at;
        at += length;
    }
    return -1;
}

/// Whether the declaration of the document says that it is UTF-8, or says nothing.
bool isMeantAsUtf8(const QByteArray &bytes)
{
    constexpr qsizetype kDeclaration = 200;
    if (bytes.startsWith("\xFE\xFF") || bytes.startsWith("\xFF\xFE"))
        return false;
    const QByteArray front = bytes.first(qMin(bytes.size(), kDeclaration)).toLower();
    const qsizetype end = front.startsWith("<?xml") ? front.indexOf("?>") : -1;
    const QByteArray declaration = end < 0 ? QByteArray() : front.first(end);
    return !declaration.contains("encoding") || declaration.contains("utf-8") || declaration.contains("utf8");
}

bool explainBytes(const QByteArray &bytes, Finding &finding)
{
    const qsizetype at = isMeantAsUtf8(bytes) ? firstWrongByte(bytes) : -1;
    if (at < 0)
        return false;
    qsizetype end = at;
    while (end < bytes.size() && end < at + 4 && static_cast<quint8>(bytes[end]) >= 0x80 &&
           lengthOfCharacter(bytes, end) == 0)
        ++end;
    const qint64 line = bytes.first(at).count('\n') + 1;
    const qsizetype begin = bytes.lastIndexOf('\n', at - bytes.size() - 1) + 1;
    const qint64 column = QString::fromUtf8(bytes.sliced(begin, at - begin)).size() + 1;
    const QByteArray wrong = bytes.sliced(at, end - at);
    finding.withPlace({finding.place.file, line, column, 1},
                      u"%1 no UTF-8 here: %2"_s.arg(wrong.size() == 1 ? u"a byte that is"_s : u"bytes that are"_s,
                                                    QString::fromLatin1(wrong.toHex(' ').toUpper())));
    finding.hint = u"save the file as UTF-8, or name its encoding in the first line: "
                   u"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"_s;
    return true;
}

// Tags

/// A start tag that waits for its end.
struct OpenTag {
    QStringView name;
    qsizetype end; ///< of the start tag, behind its ">"
};

bool isNameEnd(QChar c)
{
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'/' || c == u'>' || c == u'=' || c == u'<';
}

/// Reads the tags of a text as far as they are such.
class TagScan {
public:
    explicit TagScan(QStringView text) : m_text(text) {}

    /// Reads up to the first end tag that closes none of its name, or to the end of the text.
    void run()
    {
        while (!m_isOver && (m_at = find(u"<", m_at)) < m_text.size())
            readMarkup();
    }

    const std::vector<OpenTag> &open() const { return m_open; }
    /// The name of the end tag that ended the scan; null for the end of the text.
    QStringView wrongEnd() const { return m_wrongEnd; }
    /// What was begun and not ended there, "<!--" or "<![CDATA[" or a quote, and where; null for nothing.
    QStringView unended() const { return m_unended; }
    qsizetype at() const { return m_at; }

private:
    qsizetype find(QStringView what, qsizetype from) const
    {
        const qsizetype found = m_text.indexOf(what, from);
        return found < 0 ? m_text.size() : found;
    }

    void skip(QStringView begin, QStringView end)
    {
        const qsizetype from = m_at;
        m_at = find(end, m_at + begin.size()) + end.size();
        if (m_at > m_text.size()) {
            m_unended = begin;
            m_at = from;
            m_isOver = true;
        }
    }

    void readMarkup()
    {
        const QStringView rest = m_text.sliced(m_at);
        if (rest.startsWith(u"<!--"))
            skip(u"<!--", u"-->");
        else if (rest.startsWith(u"<![CDATA["))
            skip(u"<![CDATA[", u"]]>");
        else if (rest.startsWith(u"<?"))
            skip(u"<?", u"?>");
        else if (rest.startsWith(u"<!"))
            skip(u"<!", u">");
        else if (rest.startsWith(u"</"))
            readEnd();
        else
            readStart();
    }

    QStringView nameFrom(qsizetype begin) const
    {
        qsizetype end = begin;
        while (end < m_text.size() && !isNameEnd(m_text[end]))
            ++end;
        return m_text.sliced(begin, end - begin);
    }

    void readEnd()
    {
        const QStringView name = nameFrom(m_at + 2);
        if (m_open.empty() || m_open.back().name != name) {
            m_wrongEnd = name;
            m_isOver = true;
            return;
        }
        m_open.pop_back();
        m_at = find(u">", m_at) + 1;
    }

    void readStart()
    {
        const QStringView name = nameFrom(m_at + 1);
        qsizetype at = m_at + 1 + name.size();
        for (; at < m_text.size() && m_text[at] != u'>' && m_text[at] != u'<'; ++at) {
            if (m_text[at] != u'"' && m_text[at] != u'\'')
                continue;
            const qsizetype quote = at;
            at = find(m_text.sliced(at, 1), at + 1);
            const qsizetype tag = find(u"<", quote);
            if (tag < at) { // no value holds one
                m_unended = m_text.sliced(quote, 1);
                m_at = quote;
                m_isOver = true;
                return;
            }
        }
        if (at >= m_text.size() || m_text[at] == u'<') {
            m_at = at;
            return;
        }
        if (m_text[at - 1] != u'/')
            m_open.push_back({name, at});
        m_at = at + 1;
    }

    QStringView m_text;
    qsizetype m_at = 0;
    std::vector<OpenTag> m_open;
    QStringView m_wrongEnd;
    QStringView m_unended;
    bool m_isOver = false;
};

/// Where \a offset of \a source is; \a length characters are meant.
Place placeOf(const SourceText &source, const QString &file, qsizetype offset, qint64 length)
{
    const qint64 line = source.lineAt(offset);
    return {file, line, offset - source.beginOf(line) + 1, length};
}

void explainOpen(const TagScan &scan, const SourceText &source, Finding &finding)
{
    const OpenTag &innermost = scan.open().back();
    const QString name = innermost.name.toString();
    finding.withPlace(placeOf(source, finding.place.file, innermost.end, 1),
                      u"<%1> is opened here and not closed"_s.arg(name));
    const QString wrong = scan.wrongEnd().toString();
    const bool isOfOuter =
        std::ranges::any_of(scan.open(), [&](const OpenTag &tag) { return tag.name == scan.wrongEnd(); });
    if (wrong.isNull())
        finding.hint = u"put </%1> where it ends, or write <%1 .../> if nothing is in it"_s.arg(name);
    else if (isOfOuter)
        finding.hint = u"put </%1> in front of </%2>, or write <%1 .../> if nothing is in it"_s.arg(name, wrong);
    else
        finding.hint =
            u"</%2> closes nothing: write </%1>, with the same letters as where it is opened"_s.arg(name, wrong);
}

/// What helps against the words that the reader has for a fault.
struct FaultRow {
    QLatin1StringView words; ///< that the message begins with
    QStringView hint;
};
constexpr FaultRow kFaults[] = {
    {"Expected ''' or '\"'"_L1, u"a value stands in quotes: name=\"value\""},
    {"Expected '#' or '[a-zA-Z]'"_L1, u"an '&' in text is written &amp;"},
    {"Expected '>' or '/'"_L1, u"a quote is missing further in front, or the blank between two attributes"},
    {"Expected ';'"_L1, u"an '&' in text is written &amp;"},
    {"Expected '='"_L1, u"an attribute has a value: name=\"value\""},
    {"Entity '"_L1, u"an '&' in text is written &amp;"},
    {"Unexpected '<'"_L1, u"a '<' in a value is written &lt;, unless a quote is missing in front of it"},
    {"Extra content at end of document"_L1, u"a description has one root, <archive>; <bigarchive> holds several"},
    {"XML declaration not at start of document"_L1, u"nothing stands in front of <?xml, not even a blank"},
    {"Start tag expected"_L1, u"a description is XML, and begins with <archive>"},
    {"Sequence ']]>' not allowed"_L1, u"a '>' behind ]] is written &gt;"},
    {"Unexpected '[0-9]'"_L1, u"the name of a tag begins with a letter"},
    {"Encoding "_L1, u"save the file as UTF-8, and leave its encoding out"},
};

} // namespace

void explainDocumentFault(const QByteArray &bytes, Finding &finding)
{
    if (explainBytes(bytes, finding))
        return;
    const std::optional<SourceText> source = SourceText::ofBytes(bytes);
    if (!source)
        return;
    TagScan scan(source->text());
    scan.run();
    const QString words = finding.text();
    const bool isOfTags = words.startsWith("Opening and ending"_L1) || words.startsWith("Premature end"_L1);
    if (!scan.unended().isNull() && (isOfTags || words.startsWith("Unexpected '<'"_L1)))
        finding.withPlace(placeOf(*source, finding.place.file, scan.at(), scan.unended().size()),
                          u"%1 is begun here and not ended"_s.arg(scan.unended()));
    else if (isOfTags && !scan.open().empty())
        explainOpen(scan, *source, finding);
    else if (words.startsWith("Premature end"_L1))
        finding.hint = u"the file is empty; a description begins with <archive>"_s;
    else if (words.startsWith("Opening and ending"_L1))
        finding.hint = u"</%1> closes nothing"_s.arg(scan.wrongEnd());
    const auto row =
        std::ranges::find_if(kFaults, [&](const FaultRow &fault) { return words.startsWith(fault.words); });
    if (row != std::end(kFaults))
        finding.hint = row->hint.toString();
}

} // namespace veldmap
