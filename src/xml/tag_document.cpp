#include "xml/tag_document.h"

#include "text/text_buffer.h"
#include "xml/attribute_order.h"

#include <QDomElement>

#include <algorithm>
#include <cstring>
#include <tuple>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// The names of the attributes of \a element in the order of the document, or by name where that was not kept.
QStringList attributeNames(const QDomElement &element)
{
    const QString order = kAttributeOrder.toString();
    if (element.hasAttribute(order))
        return element.attribute(order).split(u' ');
    QStringList names;
    const QDomNamedNodeMap attributes = element.attributes();
    for (int at = 0; at < attributes.count(); ++at)
        names += attributes.item(at).nodeName();
    names.sort();
    return names;
}

bool isUpper(QChar character)
{
    return character.isUpper();
}

} // namespace

TagDocument::TagDocument(const QDomElement &element)
{
    m_rootBeforeText = element.nextSibling().isText();
    openForeignElement(element.tagName(), element.lineNumber(), element.columnNumber());
    appendDomChildren(element);
}

TagDocument::Error TagDocument::read(const QByteArray &bytes)
{
    if (readPlain(bytes))
        return {};
    // Of what was read in vain nothing stays.
    m_nodes.clear();
    m_attributes.clear();
    m_open.clear();
    m_notes.clear();
    m_placedNotes = 0;
    m_text.clear();
    m_blocks.clear();
    m_blockLeft = 0;
    return readAny(bytes);
}

Tag TagDocument::root() const
{
    return {*this, m_nodes.empty() ? kNone : 0};
}

void TagDocument::movePlaces(const std::function<std::pair<int, int>(int line)> &placeOf)
{
    for (Node &node : m_nodes) {
        if (node.kind == Kind::Element)
            std::tie(node.line, node.column) = placeOf(node.line);
    }
}

int TagDocument::appendNode(Kind kind, QStringView name, QStringView text)
{
    const int index = static_cast<int>(m_nodes.size());
    if (!m_open.empty()) {
        OpenNode &parent = m_open.back();
        int &link = parent.lastChild == kNone ? m_nodes[static_cast<std::size_t>(parent.node)].firstChild
                                              : m_nodes[static_cast<std::size_t>(parent.lastChild)].nextSibling;
        link = index;
        parent.lastChild = index;
    }
    Node &node = m_nodes.emplace_back();
    node.kind = kind;
    node.name = name;
    node.text = text;
    node.firstAttribute = static_cast<int>(m_attributes.size());
    return index;
}

void TagDocument::openElement(QStringView name, QStringView lowerName, int line, int column)
{
    const int index = appendNode(Kind::Element, lowerName, name);
    m_open.push_back({index});
    for (; m_placedNotes < m_notes.size(); ++m_placedNotes)
        m_notes[m_placedNotes].tag = index;
    Node &node = m_nodes.back();
    node.line = line;
    node.column = column;
}

/// Opens an element whose \a name does not stay.
void TagDocument::openForeignElement(QStringView name, int line, int column)
{
    const QStringView kept = keep(name);
    openElement(kept, std::ranges::none_of(kept, isUpper) ? kept : keep(kept.toString().toLower()), line, column);
}

void TagDocument::appendAttribute(QStringView name, QStringView value)
{
    m_attributes.push_back({name, value.isEmpty() ? QStringView(u"") : value});
    ++m_nodes.back().attributeCount;
}

void TagDocument::closeElement()
{
    m_open.pop_back();
    m_placedNotes = m_notes.size();
}

void TagDocument::appendNote(QStringView text, qint64 line, qint64 column)
{
    m_notes.push_back({text, line, column, kNone});
}

void TagDocument::appendDomChildren(const QDomElement &element)
{
    if (element.hasAttributes()) {
        for (const QString &name : attributeNames(element))
            appendAttribute(keep(name), keep(element.attribute(name)));
    }
    for (QDomNode child = element.firstChild(); !child.isNull(); child = child.nextSibling()) {
        if (child.isElement()) {
            openForeignElement(child.toElement().tagName(), child.lineNumber(), child.columnNumber());
            appendDomChildren(child.toElement());
        } else if (child.isCDATASection()) {
            appendNode(Kind::CData, {}, keep(child.nodeValue()));
        } else if (child.isText()) {
            appendNode(Kind::Text, {}, keep(child.nodeValue()));
        } else if (child.isComment()) {
            appendNode(Kind::Comment, {}, keep(child.nodeValue()));
        } else if (child.isProcessingInstruction()) {
            appendNode(Kind::Instruction, keep(child.toProcessingInstruction().target()), keep(child.nodeValue()));
        } else if (child.isEntityReference()) {
            appendNode(Kind::Entity, keep(child.nodeName()), {});
        }
    }
    closeElement();
}

QStringView TagDocument::keep(QStringView text)
{
    if (text.isEmpty())
        return {};
    if (text.size() > m_blockLeft) {
        m_blockLeft = std::max(m_blockSize, text.size());
        m_blocks.push_back(std::make_unique_for_overwrite<char16_t[]>(static_cast<std::size_t>(m_blockLeft)));
        m_freeText = m_blocks.back().get();
    }
    char16_t *place = m_freeText;
    std::memcpy(place, text.utf16(), static_cast<std::size_t>(text.size()) * sizeof(char16_t));
    m_freeText += text.size();
    m_blockLeft -= text.size();
    return {place, text.size()};
}

QStringView Tag::attribute(QStringView attribute) const
{
    for (const auto &[name, value] : attributes()) {
        if (name.size() == attribute.size() && std::ranges::equal(name, attribute))
            return value;
    }
    return {};
}

const TagDocument::Node *Tag::nodeAt(int index) const
{
    return index == TagDocument::kNone ? nullptr : &m_document->m_nodes[static_cast<std::size_t>(index)];
}

int Tag::firstElement(int index) const
{
    while (index != TagDocument::kNone && nodeAt(index)->kind != TagDocument::Kind::Element)
        index = nodeAt(index)->nextSibling;
    return index;
}

QStringView Tag::plainText() const
{
    const TagDocument::Node *only = nodeAt(node().firstChild);
    const bool isPlain = only && only->kind == TagDocument::Kind::Text && only->nextSibling == TagDocument::kNone &&
                         node().attributeCount == 0;
    return isPlain ? only->text : QStringView();
}

QString Tag::allText() const
{
    const QStringView plain = plainText();
    if (!plain.isNull())
        return plain.toString();
    QString text;
    appendTextBelow(m_node, text);
    return text;
}

void Tag::appendTextBelow(int index, QString &text) const
{
    using Kind = TagDocument::Kind;
    for (const TagDocument::Node *item = nodeAt(nodeAt(index)->firstChild); item; item = nodeAt(item->nextSibling)) {
        if (item->kind == Kind::Text || item->kind == Kind::CData)
            text += item->text;
        else if (item->kind == Kind::Element)
            appendTextBelow(static_cast<int>(item - nodeAt(0)), text);
    }
}

// The serialised form of an element: a line feed stands behind each start or end tag that no text follows.
//
//     <comment>see <b id="1" class="x">this</b>
//     </comment>

/// Whether \a node is text, in front of which no line feed stands; CDATA is text of another kind.
bool TagDocument::isText(const Node *node)
{
    return node && (node->kind == Kind::Text || node->kind == Kind::CData);
}

QString Tag::serialized() const
{
    QString text;
    appendSerialized(m_node, text);
    return text;
}

bool Tag::isAllBelow(int index, bool (*isFine)(QStringView text)) const
{
    const TagDocument::Node &item = *nodeAt(index);
    if (item.kind == TagDocument::Kind::Text || item.kind == TagDocument::Kind::Comment)
        return isFine(item.text);
    if (item.kind != TagDocument::Kind::Element || !isFine(item.name))
        return false;
    const Tag tag(*m_document, index);
    const auto isAttributeFine = [isFine](const TagDocument::Attribute &attribute) {
        return isFine(attribute.name) && isFine(attribute.value);
    };
    if (!std::ranges::all_of(tag.attributes(), isAttributeFine))
        return false;
    for (int child = item.firstChild; child != TagDocument::kNone; child = nodeAt(child)->nextSibling) {
        if (!isAllBelow(child, isFine))
            return false;
    }
    return true;
}

void Tag::appendSerialized(int index, QString &text) const
{
    using Kind = TagDocument::Kind;
    const TagDocument::Node &item = *nodeAt(index);
    switch (item.kind) {
    case Kind::Element:
        appendElement(item, text);
        break;
    case Kind::Text:
        text += encodedText(item.text, false);
        break;
    case Kind::CData:
        text += "<![CDATA["_L1 + item.text.toString() + "]]>"_L1;
        break;
    case Kind::Comment:
        text += "<!--"_L1 + item.text.toString() + (item.text.endsWith(u'-') ? " -->"_L1 : "-->"_L1);
        if (!TagDocument::isText(nodeAt(item.nextSibling)))
            text += u'\n';
        break;
    case Kind::Instruction:
        text += "<?"_L1 + item.name.toString() + u' ' + item.text.toString() + "?>\n"_L1;
        break;
    case Kind::Entity:
        text += u'&' + item.name.toString() + u';';
        break;
    }
}

void Tag::appendElement(const TagDocument::Node &element, QString &text) const
{
    text += u'<';
    text += element.text;
    for (int at = 0; at < element.attributeCount; ++at) {
        const auto &[name, value] =
            m_document->m_attributes[static_cast<std::size_t>(element.firstAttribute) + static_cast<std::size_t>(at)];
        text += u' ';
        text += name;
        text += "=\""_L1 + encodedText(value, true) + u'"';
    }
    if (element.firstChild == TagDocument::kNone) {
        text += "/>"_L1;
    } else {
        text += u'>';
        if (!TagDocument::isText(nodeAt(element.firstChild)))
            text += u'\n';
        for (int child = element.firstChild; child != TagDocument::kNone; child = nodeAt(child)->nextSibling)
            appendSerialized(child, text);
        text += "</"_L1;
        text += element.text;
        text += u'>';
    }
    const bool isRoot = &element == &m_document->m_nodes.front();
    if (isRoot ? !m_document->m_rootBeforeText : !TagDocument::isText(nodeAt(element.nextSibling)))
        text += u'\n';
}

namespace {

/// What stands in a document for the character of \a text at \a at, null when it stands for itself.
QLatin1StringView entityOf(QStringView text, qsizetype at, bool isAttribute)
{
    switch (text[at].unicode()) {
    case u'<':
        return "&lt;"_L1;
    case u'&':
        return "&amp;"_L1;
    case u'>':
        return at >= 2 && text[at - 1] == u']' && text[at - 2] == u']' ? "&gt;"_L1 : QLatin1StringView();
    case u'"':
        return isAttribute ? "&quot;"_L1 : QLatin1StringView();
    case u'\r':
        return "&#xd;"_L1;
    case u'\n':
        return isAttribute ? "&#xa;"_L1 : QLatin1StringView();
    case u'\t':
        return isAttribute ? "&#x9;"_L1 : QLatin1StringView();
    default:
        return {};
    }
}

/// Puts texts on one line.
class LineOfText {
public:
    /// Appends \a text as it stands in a document.
    void appendEncoded(QStringView text)
    {
        qsizetype begin = 0; // of the run that stands for itself
        for (qsizetype at = 0; at < text.size(); ++at) {
            const QChar c = text[at];
            if (isInWord(c) || (c == u' ' && at > begin && at + 1 < text.size() && isInWord(text[at + 1])))
                continue;
            const QLatin1StringView entity = entityOf(text, at, false);
            const bool isBlank = entity.isNull() && c.isSpace();
            if (!isBlank && entity.isNull())
                continue;
            appendRun(text.sliced(begin, at - begin));
            if (isBlank)
                m_isParted = true;
            else
                appendRun(entity);
            begin = at + 1;
        }
        appendRun(text.sliced(begin));
    }
    template <typename View>
    void appendRun(View run)
    {
        if (run.isEmpty())
            return;
        if (m_isParted && !m_text.isEmpty())
            m_text.append(u' ');
        m_isParted = false;
        m_text.append(run);
    }
    void appendBlank() { m_isParted = true; }
    QString text() const { return m_text.isEmpty() ? u""_s : m_text.text(); }

private:
    /// Whether \a c is surely no blank and stands for itself.
    static bool isInWord(QChar c) { return c > u' ' && c < u'\x7F' && c != u'&' && c != u'<' && c != u'>'; }

    TextBuffer m_text;
    bool m_isParted = false; // from what follows
};

} // namespace

QString Tag::lineOfText() const
{
    using Kind = TagDocument::Kind;
    if (node().attributeCount > 0)
        return {};
    LineOfText line;
    for (const TagDocument::Node *item = nodeAt(node().firstChild); item; item = nodeAt(item->nextSibling)) {
        const bool isBreak = item->kind == Kind::Element && item->text == "br"_L1 && item->attributeCount == 0 &&
                             item->firstChild == TagDocument::kNone;
        if (item->kind == Kind::Text) {
            line.appendEncoded(item->text);
        } else if (isBreak) {
            line.appendRun("<br>"_L1);
            if (!TagDocument::isText(nodeAt(item->nextSibling))) // where serialized() has a line feed
                line.appendBlank();
        } else {
            return {};
        }
    }
    return line.text();
}

QString encodedText(QStringView text, bool isAttribute)
{
    TextBuffer result;
    qsizetype begin = 0; // of the run that needs no entity
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (text[at] > u'>') // as most characters are, and none that needs an entity
            continue;
        const QLatin1StringView entity = entityOf(text, at, isAttribute);
        if (entity.isNull())
            continue;
        result.append(text.sliced(begin, at - begin));
        result.append(entity);
        begin = at + 1;
    }
    result.append(text.sliced(begin));
    return result.text();
}

} // namespace veldmap
