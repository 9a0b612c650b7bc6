#pragma once

#include "text/names.h"
#include "xml/tag_document.h"

#include <QStringList>

/// How tag handlers reach attributes, children and texts. What "missing" and "empty" mean is written here once: a
/// missing attribute reads as its default, an empty one as empty.
namespace veldmap {

/// The attribute \a name as written.
inline QString readText(const Tag &tag, QStringView name, const QString &missing = QString())
{
    const QStringView value = tag.attribute(name);
    return value.isNull() ? missing : value.toString();
}

/// The attribute \a name as a legal identifier.
inline QString readName(const Tag &tag, QStringView name)
{
    return regularizeVariableName(readText(tag, name));
}

/// Whether the attribute \a name is exactly "yes".
inline bool readFlag(const Tag &tag, QStringView name, bool missing = false)
{
    const QStringView value = tag.attribute(name);
    return value.isNull() ? missing : value == QLatin1StringView("yes");
}

/// The C qualifiers of the attribute ckeywords.
inline QStringList readKeywords(const Tag &tag)
{
    const QStringView words = tag.attribute(u"ckeywords");
    return words.isEmpty() ? QStringList() : words.toString().split(u' ', Qt::SkipEmptyParts);
}

/// The attribute count: missing, or the word "notanarray", means a plain element.
struct Count {
    bool isArray = false;
    QString expression;
    int value = 0;
};
inline Count readCount(const Tag &tag)
{
    const QStringView text = tag.attribute(u"count");
    return text.isNull() || text == QLatin1StringView("notanarray") ? Count() : Count{true, text.toString(), 0};
}

/// The child tags of a tag, in document order; texts and comments of the document are passed over.
class ChildTags {
public:
    class Iterator {
    public:
        explicit Iterator(Tag tag) : m_tag(tag) {}
        const Tag &operator*() const { return m_tag; }
        Iterator &operator++()
        {
            m_tag = m_tag.nextSibling();
            return *this;
        }
        bool operator!=(std::nullptr_t) const { return !m_tag.isNull(); }

    private:
        Tag m_tag;
    };

    explicit ChildTags(const Tag &parent) : m_parent(parent) {}
    Iterator begin() const { return Iterator(m_parent.firstChild()); }
    std::nullptr_t end() const { return nullptr; }

private:
    Tag m_parent;
};

/// The text of a `comment` tag, as readCommentFromCommentTag gives it.
QString readComment(const Tag &tag);

/// The text of a `cjoker` tag, as readCJokerFromCommentTag gives it.
QString readCJoker(const Tag &tag);

/// Takes over the text of a `comment` child into \a comment; false when \a child is another tag.
inline bool takeComment(const Tag &child, QString &comment)
{
    if (child.name() != QLatin1StringView("comment"))
        return false;
    comment = readComment(child);
    return true;
}

/// The last `comment` child's text of a tag whose other children are passed over.
inline QString readOnlyComment(const Tag &tag)
{
    QString comment;
    for (const Tag &child : ChildTags(tag))
        takeComment(child, comment);
    return comment;
}

} // namespace veldmap
