#include "check/document_rules.h"
#include "check/tag_check.h"
#include "headers/c_names.h"
#include "text/words.h"
#include "xml/tag_attributes.h"

#include <algorithm>
#include <iterator>
#include <optional>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Tags that a text has on a page, sorted.
constexpr QLatin1StringView kTextTags[] = {
    "a"_L1,      "abbr"_L1,   "b"_L1,   "big"_L1, "blockquote"_L1, "caption"_L1, "center"_L1, "cite"_L1,  "code"_L1,
    "dd"_L1,     "del"_L1,    "dfn"_L1, "div"_L1, "dl"_L1,         "dt"_L1,      "em"_L1,     "font"_L1,  "h1"_L1,
    "h2"_L1,     "h3"_L1,     "h4"_L1,  "h5"_L1,  "h6"_L1,         "i"_L1,       "ins"_L1,    "kbd"_L1,   "li"_L1,
    "mark"_L1,   "ol"_L1,     "p"_L1,   "pre"_L1, "q"_L1,          "s"_L1,       "samp"_L1,   "small"_L1, "span"_L1,
    "strike"_L1, "strong"_L1, "sub"_L1, "sup"_L1, "table"_L1,      "tbody"_L1,   "td"_L1,     "tfoot"_L1, "th"_L1,
    "thead"_L1,  "tr"_L1,     "tt"_L1,  "u"_L1,   "ul"_L1,         "var"_L1};
/// Those that have no content, so that HTML never waits for their end.
constexpr QLatin1StringView kEmptyTags[] = {"br"_L1, "hr"_L1, "img"_L1, "wbr"_L1, "col"_L1};
constexpr QLatin1StringView kActiveTags[] = {"script"_L1, "iframe"_L1, "object"_L1, "embed"_L1};

template <std::size_t size>
bool isOneOf(const QLatin1StringView (&words)[size], QStringView name)
{
    return std::ranges::any_of(words, [&](QLatin1StringView word) { return isWord(name, word); });
}

bool isTextTag(QStringView name)
{
    const auto *found = std::lower_bound(std::begin(kTextTags), std::end(kTextTags), name,
                                         [](QLatin1StringView word, QStringView of) { return of.compare(word) > 0; });
    return found != std::end(kTextTags) && *found == name;
}

/// Whether \a c shows nothing, or turns what is shown around.
bool isUnprintable(QChar c)
{
    if (c >= u' ' && c <= u'~')
        return false;
    struct Stretch {
        char16_t first;
        char16_t last;
    };
    constexpr Stretch kHidden[] = {{0x7F, 0x9F},     {0x200B, 0x200F}, {0x2028, 0x202E},
                                   {0x2060, 0x2064}, {0x2066, 0x2069}, {0xFEFF, 0xFEFF}};
    if (c < u' ')
        return c != u'\n' && c != u'\t' && c != u'\r';
    return c >= QChar(u'\x7F') && std::ranges::any_of(kHidden, [&](const Stretch &hidden) {
               return c.unicode() >= hidden.first && c.unicode() <= hidden.last;
           });
}

/// Whether \a text has nothing but printing ASCII, blanks, and no character that a rule on texts looks for.
bool isHarmless(QStringView text)
{
    quint16 harm = 0; // of the width of a character, so that a processor looks at several at once
    for (const QChar c : text) {
        const quint16 unit = c.unicode();
        const auto behindBlank = static_cast<quint16>(unit - u' ');
        harm |= static_cast<quint16>(behindBlank > u'~' - u' ' && unit != u'\n');
        harm |= static_cast<quint16>(unit == u'\\') | static_cast<quint16>(unit == u'*');
    }
    return harm == 0;
}

void checkCharacters(const TagInContext &at, QStringView text, const DocumentTeller &teller)
{
    const auto hidden = std::ranges::find_if(text, isUnprintable);
    if (hidden != text.end())
        teller.tell(rules::unprintableText, at,
                    {QString::number(hidden->unicode(), 16).toUpper().rightJustified(4, u'0')});
}

/// How deep the comment of the tag \a at is indented in the C header; nothing when it does not stand there.
std::optional<int> levelInC(const TagInContext &at)
{
    switch (at.kind()) {
    case TagKind::Archive:
    case TagKind::Type:
    case TagKind::Alias:
    case TagKind::Variable:
    case TagKind::EnumEntry:
    case TagKind::EnumBound:
    case TagKind::Spacer:
        return 0;
    case TagKind::Struct:
    case TagKind::Register:
    case TagKind::Integer: {
        int level = 0;
        for (const TagInContext *around = at.parent; around; around = around->parent)
            level += around->kind() == TagKind::Type || around->kind() == TagKind::Struct ? 1 : 0;
        return level;
    }
    default:
        return std::nullopt;
    }
}

/// A line of the header that ends with a backslash goes on in the next one.
bool continuesInC(const TagInContext &comment)
{
    constexpr int kCommentWidth = 80;
    const std::optional<int> level = comment.parent ? levelInC(*comment.parent) : std::nullopt;
    if (!level)
        return false;
    const QString lines = convertCommentToCComment(readComment(comment.tag), kCommentWidth, *level);
    return lines.endsWith(u'\\') || lines.contains("\\\n"_L1);
}

/// The attribute of \a tag that a browser runs, or null.
QStringView activeAttributeOf(const Tag &tag)
{
    for (const TagDocument::Attribute &attribute : tag.attributes()) {
        const bool isHandler = attribute.name.size() > 2 && attribute.name.startsWith("on"_L1, Qt::CaseInsensitive);
        if (isHandler || attribute.value.trimmed().startsWith("javascript:"_L1, Qt::CaseInsensitive))
            return attribute.name;
    }
    return {};
}

/// The tags inside \a tag, which is part of the comment \a at.
void checkMarkup(const TagInContext &at, const Tag &tag, const DocumentTeller &teller)
{
    for (const Tag &child : ChildTags(tag)) {
        const QStringView name = child.name();
        const auto shown = [&child] { return u'<' + shownText(child.nameAsWritten()) + u'>'; };
        const QStringView active = activeAttributeOf(child);
        const bool mayBeEmpty = isOneOf(kEmptyTags, name);
        if (isOneOf(kActiveTags, name))
            teller.tell(rules::commentScript, at, {shown()});
        else if (!active.isNull())
            teller.tell(rules::commentScript, at, {u"attribute '%1' of %2"_s.arg(shownText(active), shown())});
        else if (!mayBeEmpty && !isTextTag(name))
            teller.tell(rules::commentMarkup, at, {shown(), u"is no tag that HTML has in texts"_s});
        else if (!mayBeEmpty && child.isEmpty())
            teller.tell(
                rules::commentMarkup, at,
                {shown(), u"is empty, and stays open on a page, where a slash at the end of a tag does not count"_s});
        checkMarkup(at, child, teller);
    }
}

/// Follows the conditions of preprocessor text.
class Conditions {
public:
    struct Line {
        int number;
        QStringView text;
    };

    void readLine(const Line &line)
    {
        const QStringView text = line.text.trimmed();
        if (!m_isInComment && text.startsWith(u'#'))
            readDirective({line.number, text});
        followComment(text);
    }

    const QList<Line> &open() const { return m_open; }
    const QList<Line> &unopened() const { return m_unopened; }

private:
    void readDirective(const Line &line)
    {
        const QStringView word = line.text.sliced(1).trimmed();
        const auto is = [&](QLatin1StringView directive) {
            return word.startsWith(directive) &&
                   (word.size() == directive.size() || !word[directive.size()].isLetter());
        };
        if (is("if"_L1) || is("ifdef"_L1) || is("ifndef"_L1)) {
            m_open += line;
        } else if (is("endif"_L1)) {
            if (m_open.isEmpty())
                m_unopened += line;
            else
                m_open.removeLast();
        } else if ((is("else"_L1) || is("elif"_L1)) && m_open.isEmpty()) {
            m_unopened += line;
        }
    }

    void followComment(QStringView text)
    {
        for (qsizetype at = 0; at + 1 < text.size(); ++at) {
            if (m_isInComment) {
                m_isInComment = !text.sliced(at).startsWith("*/"_L1);
                at += m_isInComment ? 0 : 1;
            } else if (text.sliced(at).startsWith("//"_L1)) {
                return;
            } else if (text.sliced(at).startsWith("/*"_L1)) {
                m_isInComment = true;
                ++at;
            }
        }
    }

    QList<Line> m_open;
    QList<Line> m_unopened;
    bool m_isInComment = false;
};

} // namespace

void checkComment(const TagInContext &at, const DocumentTeller &teller)
{
    const QStringView plain = at.tag.plainText();
    if (plain.isNull() ? at.tag.isAll(isHarmless) : isHarmless(plain)) {
        if (plain.isNull())
            checkMarkup(at, at.tag, teller);
        return;
    }
    const QString whole = plain.isNull() && !at.tag.isEmpty() ? at.tag.serialized() : QString();
    const QStringView text = plain.isNull() ? QStringView(whole) : plain;
    checkCharacters(at, text, teller);
    if (text.contains(u'\\') && continuesInC(at))
        teller.tell(rules::trailingBackslash, at, {});
    if (text.contains(u'*') && text.contains("*/"_L1))
        teller.tell(rules::commentEnd, at, {});
    if (!plain.isNull())
        return;
    if (text.contains("<![CDATA["_L1))
        teller.tell(rules::commentMarkup, at, {u"<![CDATA["_s, u"hides text, which a page does not show"_s});
    checkMarkup(at, at.tag, teller);
}

void checkCJoker(const TagInContext &at, const DocumentTeller &teller)
{
    const QString text = readCJoker(at.tag);
    checkCharacters(at, text, teller);
    Conditions conditions;
    int number = 0;
    for (const QStringView line : QStringView(text).split(u'\n'))
        conditions.readLine({++number, line});
    const auto tell = [&](const QList<Conditions::Line> &lines, const QString &complaint) {
        for (const Conditions::Line &line : lines)
            teller.tell(rules::openCondition, at, {QString::number(line.number), shownText(line.text), complaint});
    };
    tell(conditions.open(), u"is not closed by an #endif"_s);
    tell(conditions.unopened(), u"belongs to no #if, and ends the guard of the header"_s);
}

} // namespace veldmap
