#include "check/document_checks.h"

#include "check/document_rules.h"
#include "check/number_checks.h"
#include "check/tag_check.h"
#include "xml/tag_attributes.h"

#include <algorithm>
#include <iterator>
#include <optional>

using namespace Qt::StringLiterals;

namespace veldmap {

const TagInContext *TagInContext::enclosing(TagKind wanted) const
{
    const TagInContext *at = parent;
    while (at && at->kind() != wanted)
        at = at->parent;
    return at;
}

QString TagInContext::title() const
{
    QStringList path;
    for (const TagInContext *at = this; at; at = at->parent) {
        QStringView name = at->tag.attribute(u"name");
        if (name.isEmpty() && at->kind() == TagKind::BitgroupEntry)
            name = at->tag.attribute(u"ref");
        if (!name.isEmpty())
            path.prepend(shownText(name));
    }
    const QString word = row.name;
    return path.isEmpty() ? word : word + " '"_L1 + path.join(u'.') + u'\'';
}

void DocumentTeller::tell(const LintRule &rule, const TagInContext &at, const QStringList &arguments) const
{
    m_sink.take(Finding(rule.rule, placeOf(at.tag), QStringList(at.title()) + arguments));
}

void DocumentTeller::tell(const LintRule &rule, const TagInContext &at, const QStringList &arguments, const Tag &other,
                          const QString &what) const
{
    Finding finding(rule.rule, placeOf(at.tag), QStringList(at.title()) + arguments);
    finding.related.append({placeOf(other), what});
    m_sink.take(finding);
}

Place DocumentTeller::placeOf(const Tag &tag)
{
    return {{}, tag.lineNumber(), tag.columnNumber(), 0};
}

QString shownText(QStringView value)
{
    constexpr qsizetype kLongest = 60;
    const QString text = value.first(qMin(value.size(), 4 * kLongest)).toString().simplified();
    return text.size() <= kLongest ? text : text.first(kLongest - 3) + u"..."_s;
}

namespace {

/// Whether the loader takes a tag without a name, though what is generated names it.
bool mayLackName(TagKind kind)
{
    constexpr TagKind kKinds[] = {TagKind::Option, TagKind::Bitgroup, TagKind::Enum, TagKind::Alias,
                                  TagKind::Memory, TagKind::Pointer,  TagKind::Half};
    return std::ranges::find(kKinds, kind) != std::end(kKinds);
}

/// Whether \a attribute is for editors: it declares a prefix, or names the schema of the file.
bool isForEditors(QStringView attribute)
{
    return attribute.startsWith("xmlns:"_L1) || attribute.startsWith("xsi:"_L1);
}

/// Looks at the tags of a document, each once, from the root down.
class DocumentWalk {
public:
    explicit DocumentWalk(Sink &sink) : m_teller(sink), m_numbers(m_teller) {}

    void walk(const TagInContext &at)
    {
        checkAttributes(at);
        m_numbers.learn(at);
        // What is below these is text.
        if (at.kind() == TagKind::Comment)
            return checkComment(at, m_teller);
        if (at.kind() == TagKind::CJoker)
            return checkCJoker(at, m_teller);
        std::optional<Tag> comment;
        std::optional<Tag> cJoker;
        for (const Tag &child : ChildTags(at.tag)) {
            const TagRow *row = findTagRow(at.kind(), child.name());
            if (!row) {
                // Elsewhere the loader has the word for it.
                if (passesOverTags(at.kind()))
                    m_teller.tell(rules::unusedTag, at, {shownText(child.nameAsWritten())});
                continue;
            }
            const TagInContext inside = {child, *row, &at};
            if (row->kind == TagKind::Comment)
                checkRepeated(inside, comment);
            else if (row->kind == TagKind::CJoker)
                checkRepeated(inside, cJoker);
            walk(inside);
        }
    }

private:
    void checkAttributes(const TagInContext &at)
    {
        for (const TagDocument::Attribute &attribute : at.tag.attributes()) {
            const AttributeRow *row = at.row.findAttribute(attribute.name);
            if (row)
                checkAttribute(at, *row, attribute.value);
            else if (!isForEditors(attribute.name))
                checkUnknownAttribute(at, attribute.name, m_teller);
        }
        if (mayLackName(at.kind()) && at.tag.attribute(u"name").isEmpty())
            m_teller.tell(rules::nameless, at, {});
    }

    void checkAttribute(const TagInContext &at, const AttributeRow &row, QStringView value)
    {
        switch (row.value) {
        case ValueKind::Name:
        case ValueKind::RawName:
            checkName(at, row.value, value, m_teller);
            break;
        case ValueKind::Number:
        case ValueKind::CNumber:
        case ValueKind::Address:
        case ValueKind::Condition:
        case ValueKind::Count:
            m_numbers.check(at, row, value);
            break;
        case ValueKind::Flag:
        case ValueKind::Protection:
        case ValueKind::Access:
        case ValueKind::Display:
        case ValueKind::Reset:
        case ValueKind::CutDetail:
        case ValueKind::Unused:
            checkWord(at, row, value, m_teller);
            break;
        case ValueKind::Text:
            if (row.name == "file"_L1 || row.name == "relative"_L1)
                checkFileName(at, value, m_teller);
            break;
        }
    }

    void checkRepeated(const TagInContext &text, std::optional<Tag> &earlier)
    {
        if (earlier)
            m_teller.tell(rules::repeatedText, text, {QString::number(earlier->lineNumber())}, *earlier,
                          u"this one is replaced"_s);
        earlier = text.tag;
    }

    const DocumentTeller m_teller;
    NumberChecks m_numbers;
};

} // namespace

void checkDocument(const TagDocument &document, Sink &sink)
{
    const Tag root = document.root();
    if (root.isNull())
        return;
    if (const TagRow *row = findTagRow(TagKind::Document, root.name()))
        DocumentWalk(sink).walk({root, *row});
}

} // namespace veldmap
