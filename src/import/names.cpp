#include "import/names.h"

#include "text/names.h"
#include "xml/tag_document.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

/// Runs of digits and of other characters in turn; the first one is never a number.
QStringList wordsOf(const QString &text)
{
    QStringList words;
    qsizetype begin = 0;
    bool inNumber = false;
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (isDigit(text[at]) == inNumber)
            continue;
        words += text.sliced(begin, at - begin);
        begin = at;
        inNumber = !inNumber;
    }
    return words += text.sliced(begin);
}

/// What stands for the end of a paragraph until the text is markup.
constexpr QChar kParagraph = QChar(0x1D);

/// Whether \a text stands on one line, without a blank too many or a character that is not for a comment.
bool isTidy(QStringView text)
{
    QChar last = u' ';
    for (const QChar c : text) {
        if (c < u' ' || c > u'~' || c == u'\\' || (c == u' ' && last == u' '))
            return false;
        last = c;
    }
    return text.isEmpty() || last != u' ';
}

/// \a text on one line.
QString onOneLine(const QString &text)
{
    // Tools for such files write "\n" where a line of the manual ends, and twice where a paragraph does.
    QString line;
    line.reserve(text.size() + 1);
    int breaks = 0;
    bool isParted = false;
    for (qsizetype at = 0; at < text.size(); ++at) {
        QChar c = text[at];
        if (c == u'\\' && at + 1 < text.size() && text[at + 1] == u'n') {
            ++breaks;
            ++at;
            continue;
        }
        if (c.isSpace() || !c.isPrint() || c == u'\\') {
            isParted = true;
            continue;
        }
        if (!line.isEmpty() && breaks > 1)
            line += kParagraph;
        else if (!line.isEmpty() && (isParted || breaks > 0))
            line += u' ';
        breaks = 0;
        isParted = false;
        line += c;
    }
    return line;
}

/// \a line as a comment.
QString markupOf(QString line)
{
    for (const QString &made : {u"Description cluster"_s, u"Description collection"_s}) {
        if (!line.startsWith(made))
            continue;
        const qsizetype colon = line.indexOf(": "_L1);
        const QStringView between = colon < 0 ? QStringView() : QStringView(line).mid(made.size(), colon - made.size());
        if (colon > 0 && (between.isEmpty() || between.startsWith(u'[')))
            line = line.sliced(colon + 2);
    }
    line.replace("*/"_L1, "* /"_L1);
    if (line.isEmpty() || line == "Unspecified"_L1) // as tools write where nobody wrote anything
        return {};
    // Not the first letter of a name such as "nRESET".
    if (line.size() > 1 && line[0].isLower() && !line[1].isUpper() && !isDigit(line[1]) && line[1] != u'_')
        line[0] = line[0].toUpper();
    const bool hasSentences = line.contains(". "_L1) || line.contains(kParagraph);
    const bool isEnded = QStringView(u".:;!?)]").contains(line.back());
    if (hasSentences && !isEnded)
        line += u'.';
    return encodedText(line, false).replace(kParagraph, "<br/>"_L1);
}

} // namespace

QString cleanName(const QString &name)
{
    const auto isFirstFine = [&] { return !name.isEmpty() && !isDigit(name.front()) && name.front() != u'_'; };
    const auto isOneOf = [](QChar c) { return isNameCharacter(c); };
    if (isFirstFine() && !name.endsWith(u'_') && !name.contains("__"_L1) && std::ranges::all_of(name, isOneOf))
        return name;
    QString clean;
    for (const QChar c : name) {
        const bool isFine = isNameCharacter(c) && c != u'_';
        if (isFine)
            clean += c;
        else if (!clean.isEmpty() && !clean.endsWith(u'_'))
            clean += u'_';
    }
    while (clean.endsWith(u'_'))
        clean.chop(1);
    if (clean.isEmpty())
        return u"unnamed"_s;
    return isDigit(clean[0]) ? u'N' + clean : clean;
}

QString cleanComment(const QString &text)
{
    const QString line = isTidy(text) ? text : onOneLine(text);
    return markupOf(line);
}

QString UsedNames::unique(const QString &name)
{
    QString given = name;
    for (int number = 2; m_names.contains(given.toUpper()); ++number)
        given = name + u'_' + QString::number(number);
    m_names.insert(given.toUpper());
    return given;
}

std::optional<NumberedName> numberedName(const QString &name, bool isLast)
{
    constexpr qsizetype kMostDigits = 5;
    const QStringList words = wordsOf(name);
    // The first word is no number, so numbers are at odd places.
    const qsizetype at = isLast ? (words.size() - 1) - (words.size() % 2) : 1;
    if (at < 1 || at >= words.size())
        return std::nullopt;
    const QString &number = words[at];
    if (number.size() > kMostDigits || (number.size() > 1 && number[0] == u'0'))
        return std::nullopt;
    return NumberedName{words.first(at).join(QString()), number.toUInt(), words.sliced(at + 1).join(QString())};
}

NumberedText::NumberedText(const QString &text, uint number) : m_words(wordsOf(text)), m_number(number)
{
    m_isAny.resize(m_words.size());
}

bool NumberedText::accepts(const QString &text, uint number)
{
    const QStringList words = wordsOf(text);
    if (words.size() != m_words.size())
        return false;
    const QString own = QString::number(number);
    const QString first = QString::number(m_number);
    for (qsizetype at = 0; at < words.size(); ++at) {
        if (m_isAny[at] ? words[at] == own : words[at] == m_words[at])
            continue;
        if (!m_isFirst || words[at] != own || m_words[at] != first)
            return false;
        m_isAny[at] = true;
    }
    m_isFirst = false;
    return true;
}

QString NumberedText::general(QStringView any) const
{
    QString text;
    for (qsizetype at = 0; at < m_words.size(); ++at)
        text += m_isAny[at] ? any : QStringView(m_words[at]);
    return text;
}

} // namespace veldmap
