#include "xml/tag_document.h"

#include "xml/attribute_order.h"

#include <QDomElement>

#include <algorithm>
#include <cstring>

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
    return readAny(bytes);
}

Tag TagDocument::root() const
{
    return {*this, m_nodes.empty() ? kNone : 0};
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
    if (m_blocks.empty() || m_blockUsed + text.size() > m_blockSize) {
        m_blockSize = std::max<qsizetype>({m_blockSize, text.size(), 256});
        m_blocks.push_back(std::make_unique_for_overwrite<char16_t[]>(static_cast<std::size_t>(m_blockSize)));
        m_blockUsed = 0;
    }
    char16_t *place = m_blocks.back().get() + m_blockUsed;
    std::memcpy(place, text.utf16(), static_cast<std::size_t>(text.size()) * sizeof(char16_t));
    m_blockUsed += text.size();
    return {place, text.size()};
}

QStringView Tag::attribute(QStringView attribute) const
{
    const auto first = m_document->m_attributes.cbegin() + node().firstAttribute;
    const auto last = first + node().attributeCount;
    const auto found = std::find_if(first, last, [&](const auto &candidate) { return candidate.name == attribute; });
    return found == last ? QStringView() : found->value;
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
QString entityOf(QStringView text, qsizetype at, bool isAttribute)
{
    const char16_t c = text[at].unicode();
    if (c == u'<')
        return u"&lt;"_s;
    if (c == u'&')
        return u"&amp;"_s;
    if (c == u'"' && isAttribute)
        return u"&quot;"_s;
    if (c == u'>' && at >= 2 && text[at - 1] == u']' && text[at - 2] == u']')
        return u"&gt;"_s;
    if (c == u'\r' || (isAttribute && (c == u'\n' || c == u'\t')))
        return "&#x"_L1 + QString::number(c, 16) + u';';
    return {};
}

} // namespace

QString encodedText(QStringView text, bool isAttribute)
{
    QString result;
    result.reserve(text.size());
    qsizetype begin = 0; // of the run that needs no entity
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (text[at] > u'>') // as most characters are, and none that needs an entity
            continue;
        const QString entity = entityOf(text, at, isAttribute);
        if (entity.isNull())
            continue;
        result += text.sliced(begin, at - begin);
        result += entity;
        begin = at + 1;
    }
    result += text.sliced(begin);
    return result;
}

} // namespace veldmap
