#include "site/comment_html.h"

#include "site/html_text.h"

#include <QVarLengthArray>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

enum class Place {
    Phrase, ///< inside a line of text
    Void,   ///< a line break, which holds nothing
    Block,  ///< a paragraph, which holds phrases
    List,   ///< holds items alone
    Item,   ///< stands in a list and may hold lists
};

/// A tag that a comment may have.
struct HarmlessTag {
    QLatin1StringView name;
    Place place;
};
constexpr HarmlessTag kHarmless[] = {
    {"b"_L1, Place::Phrase},      {"i"_L1, Place::Phrase},    {"u"_L1, Place::Phrase},     {"s"_L1, Place::Phrase},
    {"em"_L1, Place::Phrase},     {"code"_L1, Place::Phrase}, {"sub"_L1, Place::Phrase},   {"sup"_L1, Place::Phrase},
    {"strong"_L1, Place::Phrase}, {"kbd"_L1, Place::Phrase},  {"small"_L1, Place::Phrase}, {"var"_L1, Place::Phrase},
    {"br"_L1, Place::Void},       {"p"_L1, Place::Block},     {"ul"_L1, Place::List},      {"ol"_L1, Place::List},
    {"li"_L1, Place::Item},
};

/// One tag of a comment, in the text from its "<" to its ">".
struct CommentTag {
    const HarmlessTag *known = nullptr; ///< null for one that is not on the list
    bool closes = false;
    bool isXmlComment = false;
    qsizetype length = 0; ///< 0 where no tag begins
};

CommentTag tagAt(QStringView text)
{
    CommentTag tag;
    if (text.startsWith("<!--"_L1)) {
        const qsizetype end = text.indexOf("-->"_L1, 4);
        tag.isXmlComment = end >= 0;
        tag.length = end >= 0 ? end + 3 : 0;
        return tag;
    }
    const qsizetype end = text.indexOf(u'>');
    if (end < 0)
        return tag;
    tag.length = end + 1;
    tag.closes = text.size() > 1 && text[1] == u'/';
    const qsizetype begin = tag.closes ? 2 : 1;
    qsizetype behind = begin;
    while (behind < end && text[behind].unicode() < 0x80 && text[behind].isLetterOrNumber())
        ++behind;
    const QStringView name = text.sliced(begin, behind - begin);
    const auto row = std::ranges::find_if(kHarmless, [&](const HarmlessTag &known) {
        return name.size() == known.name.size() && name.compare(known.name, Qt::CaseInsensitive) == 0;
    });
    const bool isWhole = behind == end || text[behind].isSpace() || text[behind] == u'/';
    tag.known = row != std::end(kHarmless) && isWhole ? row : nullptr;
    return tag;
}

/// The character that an entity at the begin of \a text stands for, and its length; length 0 where there is none.
struct Entity {
    char16_t character = 0;
    qsizetype length = 0;
};

Entity entityAt(QStringView text)
{
    struct Row {
        QLatin1StringView entity;
        char16_t character;
    };
    constexpr Row kRows[] = {{"&lt;"_L1, u'<'},   {"&gt;"_L1, u'>'},    {"&amp;"_L1, u'&'},
                             {"&quot;"_L1, u'"'}, {"&apos;"_L1, u'\''}, {"&#xd;"_L1, u' '}};
    const auto row = std::ranges::find_if(kRows, [&](const Row &it) { return text.startsWith(it.entity); });
    return row == std::end(kRows) ? Entity() : Entity{row->character, row->entity.size()};
}

/// Cuts a comment into texts and tags. Listener: text(QStringView), character(QChar), tag(const CommentTag &,
/// QStringView).
template <typename Listener>
void readComment(QStringView comment, Listener &listener)
{
    qsizetype begin = 0;
    const auto flush = [&](qsizetype end) {
        if (end > begin)
            listener.text(comment.sliced(begin, end - begin));
    };
    for (qsizetype at = 0; at < comment.size();) {
        if (comment[at] != u'<' && comment[at] != u'&') {
            ++at;
            continue;
        }
        const QStringView rest = comment.sliced(at);
        qsizetype length = 0;
        if (rest[0] == u'<') {
            if (const CommentTag tag = tagAt(rest); tag.length > 0) {
                flush(at);
                listener.tag(tag, rest.first(tag.length));
                length = tag.length;
            }
        } else if (const Entity entity = entityAt(rest); entity.length > 0) {
            flush(at);
            listener.character(QChar(entity.character));
            length = entity.length;
        }
        at += qMax<qsizetype>(length, 1);
        if (length > 0)
            begin = at;
    }
    flush(comment.size());
}

/// Keeps the tags of a comment in an order that HTML allows.
class CommentWriter {
public:
    explicit CommentWriter(HtmlText &text) : m_text(text) {}

    void text(QStringView piece)
    {
        const bool isBlank = std::ranges::all_of(piece, [](QChar c) { return c.isSpace(); });
        if (isBlank && isInList())
            return;
        startItem();
        m_text.put(piece);
    }
    void character(QChar character) { text(QStringView(&character, 1)); }

    void tag(const CommentTag &tag, QStringView source)
    {
        if (tag.isXmlComment)
            return;
        if (!tag.known || !(tag.closes ? close(*tag.known) : open(*tag.known)))
            text(source);
    }

    void closeAll() { closeTo(0); }

private:
    static constexpr qsizetype kMostOpen = 32; // beyond, tags are text; browsers have limits of their own

    bool isInList() const { return !m_open.isEmpty() && m_open.last()->place == Place::List; }

    /// A list holds items alone.
    void startItem()
    {
        if (isInList())
            push(*std::ranges::find(kHarmless, Place::Item, &HarmlessTag::place));
    }

    void push(const HarmlessTag &tag)
    {
        m_open.append(&tag);
        m_text.put("<"_L1, tag.name, ">"_L1);
    }

    void closeTo(qsizetype count)
    {
        for (; m_open.size() > count; m_open.removeLast())
            m_text.put("</"_L1, m_open.last()->name, ">"_L1);
    }

    /// False where HTML does not allow the tag.
    bool open(const HarmlessTag &tag)
    {
        if (tag.place == Place::Void) {
            startItem();
            m_text.put("<"_L1, tag.name, ">"_L1);
            return true;
        }
        if (m_open.size() >= kMostOpen)
            return false;
        if (tag.place == Place::Item) {
            if (!m_open.isEmpty() && m_open.last()->place == Place::Item)
                closeTo(m_open.size() - 1);
            if (!isInList())
                return false;
        } else if (tag.place == Place::Phrase) {
            startItem();
        } else {
            if (!m_open.isEmpty() && m_open.last()->place == Place::Block)
                closeTo(m_open.size() - 1);
            startItem();
            if (!m_open.isEmpty() && m_open.last()->place != Place::Item)
                return false;
        }
        push(tag);
        return true;
    }

    bool close(const HarmlessTag &tag)
    {
        for (qsizetype at = m_open.size(); at > 0; --at) {
            if (m_open[at - 1] == &tag) {
                closeTo(at - 1);
                return true;
            }
        }
        return tag.place != Place::Phrase; // a break, or one that was closed by what followed it
    }

    HtmlText &m_text;
    QVarLengthArray<const HarmlessTag *, 8> m_open;
};

/// The text of a comment alone.
struct PlainWriter {
    QString result;

    void text(QStringView piece) { result += piece; }
    void character(QChar character) { result += character; }
    void tag(const CommentTag &tag, QStringView source)
    {
        if (tag.isXmlComment)
            return;
        if (!tag.known)
            result += source;
        else if (tag.known->place != Place::Phrase)
            result += u' ';
    }
};

bool isPlain(const QString &comment)
{
    return !comment.contains(u'<') && !comment.contains(u'&');
}

} // namespace

void appendComment(HtmlText &text, const QString &comment)
{
    if (isPlain(comment)) {
        text.put(comment);
        return;
    }
    CommentWriter writer(text);
    readComment(comment, writer);
    writer.closeAll();
}

QString plainComment(const QString &comment)
{
    if (isPlain(comment))
        return comment;
    PlainWriter writer;
    readComment(comment, writer);
    return writer.result.simplified();
}

QString summaryOf(const QString &comment, int longest)
{
    QString text = plainComment(comment);
    if (const qsizetype end = text.indexOf(". "_L1); end >= 0)
        text.truncate(end);
    if (text.size() <= longest)
        return text;
    text.truncate(longest - 1);
    if (text.back().isHighSurrogate())
        text.chop(1);
    return text.trimmed() + u'…';
}

} // namespace veldmap
