#include "check/schema.h"
#include "support/loaded.h"

#include <QDomDocument>
#include <QHash>
#include <QSet>

using namespace Qt::StringLiterals;
using veldmap::TagKind;
using veldmap::ValueKind;

namespace {

/// The parts of an XML schema that ours is made of.
class Schema {
public:
    explicit Schema(const QString &path)
    {
        EXPECT_TRUE(m_document.setContent(readFile(path))) << path.toStdString();
        for (const QDomElement &part : childrenOf(m_document.documentElement()))
            m_parts.insert(part.tagName() + u' ' + part.attribute(u"name"_s), part);
    }

    QDomElement root() const { return m_document.documentElement(); }

    /// The definition of what \a element is: inside it, or under the name of its type; null when that is no structure.
    QDomElement typeOf(const QDomElement &element) const
    {
        const QString name = element.attribute(u"type"_s);
        return name.isEmpty() ? element.firstChildElement(u"xs:complexType"_s) : m_parts[u"xs:complexType "_s + name];
    }

    /// What stands in \a part under the tag \a wanted, looking into groups and through references.
    QList<QDomElement> allOf(const QString &wanted, const QDomElement &part) const
    {
        QList<QDomElement> found;
        for (const QDomElement &child : childrenOf(part)) {
            if (m_definitions.contains(child.tagName()) && child.hasAttribute(u"name"_s))
                continue; // stands where it is referred to
            const QString reference = child.attribute(u"ref"_s);
            const QDomElement meant = reference.isEmpty() ? child : m_parts[child.tagName() + u' ' + reference];
            EXPECT_FALSE(meant.isNull()) << reference.toStdString();
            if (meant.tagName() == wanted)
                found += meant;
            else if (meant.tagName() != "xs:element"_L1)
                found += allOf(wanted, meant);
        }
        return found;
    }

private:
    static QList<QDomElement> childrenOf(const QDomElement &element)
    {
        QList<QDomElement> children;
        for (QDomElement child = element.firstChildElement(); !child.isNull(); child = child.nextSiblingElement())
            children += child;
        return children;
    }

    const QStringList m_definitions{u"xs:complexType"_s, u"xs:group"_s, u"xs:attributeGroup"_s};
    QDomDocument m_document;
    QHash<QString, QDomElement> m_parts;
};

QStringList typesFor(ValueKind kind)
{
    switch (kind) {
    case ValueKind::Name:
    case ValueKind::RawName:
        return {u"name"_s, u"xs:string"_s};
    case ValueKind::Text:
        return {u"name"_s, u"xs:string"_s, u"expression"_s, u"direction"_s, u"pieceSize"_s};
    case ValueKind::Number:
    case ValueKind::Address:
    case ValueKind::Condition:
    case ValueKind::Count:
        return {u"expression"_s};
    case ValueKind::CNumber:
        return {u"expression"_s, u"xs:string"_s};
    case ValueKind::Flag:
        return {u"flag"_s};
    case ValueKind::Protection:
        return {u"protection"_s};
    case ValueKind::Access:
        return {u"access"_s};
    case ValueKind::Display:
        return {u"display"_s};
    case ValueKind::Reset:
        return {u"reset"_s};
    case ValueKind::CutDetail:
        return {u"expression"_s, u"xs:string"_s};
    case ValueKind::Unused:
        break;
    }
    return {};
}

bool hasText(const QDomElement &part)
{
    const QDomElement note = part.firstChildElement(u"xs:annotation"_s);
    return !note.firstChildElement(u"xs:documentation"_s).text().simplified().isEmpty();
}

/// Compares a schema with the table, from the tags that a document may begin with on down.
class Comparison {
public:
    explicit Comparison(const Schema &schema) : m_schema(schema) {}

    void compareInside(TagKind kind, const QDomElement &type)
    {
        if (m_compared.contains(kind))
            return;
        m_compared.insert(kind);
        QStringList names;
        for (const QDomElement &element : m_schema.allOf(u"xs:element"_s, type)) {
            const QString name = element.attribute(u"name"_s);
            names += name;
            SCOPED_TRACE(name.toStdString());
            EXPECT_TRUE(hasText(element));
            const veldmap::TagRow *row = veldmap::findTagRow(kind, name);
            ASSERT_NE(row, nullptr);
            compareAttributes(*row, m_schema.typeOf(element));
            compareInside(row->kind, m_schema.typeOf(element));
        }
        QStringList known = veldmap::tagNamesIn(kind);
        names.removeDuplicates(); // an alias has its first one, and further ones
        names.sort();
        known.sort();
        EXPECT_EQ(names, known) << static_cast<int>(kind);
    }

    qsizetype compared() const { return m_compared.size(); }

private:
    void compareAttributes(const veldmap::TagRow &row, const QDomElement &type)
    {
        QStringList names;
        for (const QDomElement &attribute : m_schema.allOf(u"xs:attribute"_s, type)) {
            const QString name = attribute.attribute(u"name"_s);
            names += name;
            SCOPED_TRACE(name.toStdString());
            EXPECT_TRUE(hasText(attribute));
            const veldmap::AttributeRow *known = row.findAttribute(name);
            ASSERT_NE(known, nullptr);
            EXPECT_TRUE(typesFor(known->value).contains(attribute.attribute(u"type"_s)));
        }
        QStringList known;
        for (const veldmap::AttributeRow &attribute : row.attributes) {
            if (attribute.value != ValueKind::Unused)
                known += attribute.name;
        }
        names.sort();
        known.sort();
        EXPECT_EQ(names, known);
    }

    const Schema &m_schema;
    QSet<TagKind> m_compared;
};

} // namespace

TEST(Schema, OfEditorsHasTheTagsAndAttributesOfLint)
{
    const Schema schema(QStringLiteral(SOURCE_DIRECTORY "/../schema/veldmap.xsd"));
    Comparison comparison(schema);
    comparison.compareInside(TagKind::Document, schema.root());
    EXPECT_EQ(comparison.compared(), static_cast<qsizetype>(TagKind::BitgroupEntry) + 1);
}
