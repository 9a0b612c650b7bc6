#include "xml/tag_document.h"

#include "findings/limits.h"
#include "xml/attribute_order.h"
#include "xml/rules.h"

#include <QDomElement>
#include <QRegularExpression>
#include <QStringConverter>
#include <QXmlStreamReader>

#include <algorithm>
#include <cstring>
#include <utility>

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

/// Whether the characters of ASCII stand in \a bytes as themselves.
bool isAsciiCompatible(const QByteArray &bytes)
{
    // <?xml version="1.0" encoding="iso-8859-1"?> does; encoding="UTF-7" does not.
    static const QRegularExpression foreign(
        u"^<\\?xml[^>]*encoding\\s*=\\s*[\"'](?!utf-8|us-ascii|iso-8859-|windows-125)"_s,
        QRegularExpression::CaseInsensitiveOption);
    const auto encoding = QStringConverter::encodingForData(bytes, u'<');
    const QByteArray head = bytes.first(qMin<qsizetype>(bytes.size(), 200));
    return (!encoding || *encoding == QStringConverter::Utf8) && head.contains('<') &&
           !foreign.match(QString::fromLatin1(head)).hasMatch();
}

/// How often a document may refer to entities of its own.
qint64 entityReferences(const QByteArray &bytes)
{
    if (!isAsciiCompatible(bytes))
        return bytes.size() / 3; // "&a;" is the shortest
    if (!bytes.contains("<!ENTITY"))
        return 0;
    qint64 references = bytes.count('&') - bytes.count("&#");
    for (const char *builtIn : {"&lt;", "&gt;", "&amp;", "&quot;", "&apos;"})
        references -= bytes.count(builtIn);
    return references;
}

/// The characters to which one entity may grow, so that all references of a document stay within their limit.
int entityLimit(const QByteArray &bytes)
{
    constexpr qint64 kReadersOwnLimit = 4096;
    constexpr qint64 kShortEntity = 64;
    const qint64 references = qMax<qint64>(entityReferences(bytes), 1);
    return static_cast<int>(std::clamp(limits::kEntityCharacters / references, kShortEntity, kReadersOwnLimit));
}

/// Where the markup ends that begins at \a begin with "<!" or "<?" and may hold a "<".
qsizetype endOfMarkup(QByteArrayView text, qsizetype begin)
{
    constexpr std::pair<QByteArrayView, QByteArrayView> kForms[] = {
        {"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};
    for (const auto &[first, last] : kForms) {
        if (!text.sliced(begin).startsWith(first))
            continue;
        const qsizetype end = text.indexOf(last, begin + first.size());
        return end < 0 ? text.size() : end;
    }
    return begin + 1;
}

Refusal attributesError()
{
    return {&rules::tooManyAttributes, {QString::number(limits::kTagAttributes)}};
}

/// The number of attributes of the tag that \a text begins with: its "=" outside quotes.
int attributesOf(QByteArrayView text)
{
    int attributes = 0;
    char quote = '\0';
    for (const char c : text) {
        if (quote != '\0')
            quote = c == quote ? '\0' : quote;
        else if (c == '>')
            break;
        else if (c == '"' || c == '\'')
            quote = c;
        else
            attributes += c == '=' ? 1 : 0;
    }
    return attributes;
}

/// The first tag in \a bytes with more attributes than the limit, as an error. The reader's time grows with the square
/// of their number, so they are counted before it starts.
TagDocument::Error findTagOfManyAttributes(const QByteArray &bytes)
{
    // An attribute takes four bytes at least, and markup that is no tag can't begin inside one.
    constexpr qsizetype kLongTag = 4 * limits::kTagAttributes;
    const QByteArrayView text(bytes);
    for (qsizetype tag = text.indexOf('<'); tag >= 0;) {
        if (tag + 1 < text.size() && (text[tag + 1] == '!' || text[tag + 1] == '?')) {
            tag = text.indexOf('<', endOfMarkup(text, tag));
            continue;
        }
        const qsizetype next = text.indexOf('<', tag + 1);
        const QByteArrayView upToNext = text.sliced(tag, (next < 0 ? text.size() : next) - tag);
        if (upToNext.size() > kLongTag && attributesOf(upToNext) > limits::kTagAttributes)
            return {attributesError(), 1 + text.first(tag).count('\n'),
                    tag - (tag == 0 ? 0 : text.lastIndexOf('\n', tag - 1) + 1)};
        tag = next;
    }
    return {};
}

} // namespace

/// Fills a document from the tokens of the XML reader.
class TagDocument::Reader {
public:
    Reader(TagDocument &document, const QByteArray &bytes)
        : m_document(document), m_reader(bytes), m_charactersLeft(bytes.size() + limits::kEntityCharacters)
    {
        m_reader.setNamespaceProcessing(false);
        m_reader.setEntityExpansionLimit(entityLimit(bytes));
    }

    Error read(const QByteArray &bytes)
    {
        if (const Error tooMany = findTagOfManyAttributes(bytes))
            return tooMany;
        while (!m_reader.atEnd()) {
            m_reader.readNext();
            if (const Refusal refused = refusal())
                return errorHere(refused);
            takeToken();
        }
        return m_reader.hasError() ? errorHere(notWellFormed(m_reader.errorString())) : Error();
    }

private:
    int depth() const { return static_cast<int>(m_document.m_open.size()); }

    static Refusal notWellFormed(const QString &text) { return {&rules::notWellFormed, {text}}; }

    Error errorHere(const Refusal &refused) const { return {refused, m_reader.lineNumber(), m_reader.columnNumber()}; }

    /// Why the token can't be taken.
    Refusal refusal()
    {
        switch (m_reader.tokenType()) {
        case QXmlStreamReader::StartElement:
            m_rootSeen = true;
            if (depth() >= limits::kTagDepth)
                return {&rules::tagsTooDeep, {QString::number(limits::kTagDepth)}};
            m_attributes = m_reader.attributes();
            if (m_attributes.size() > limits::kTagAttributes) // a document type may add some
                return attributesError();
            for (const QXmlStreamAttribute &attribute : std::as_const(m_attributes))
                m_charactersLeft -= attribute.value().size();
            break;
        case QXmlStreamReader::DTD:
            // The reader takes a document type anywhere; QDomDocument refuses it in these words.
            if (m_rootSeen)
                return notWellFormed(u"Unexpected token"_s);
            if (std::exchange(m_documentTypeSeen, true))
                return notWellFormed(u"Multiple DTD sections are not allowed"_s);
            break;
        default:
            m_charactersLeft -= m_reader.text().size();
            break;
        }
        return m_charactersLeft >= 0 ? Refusal()
                                     : Refusal{&rules::entitiesTooLarge, {QString::number(limits::kEntityCharacters)}};
    }

    void takeToken()
    {
        switch (m_reader.tokenType()) {
        case QXmlStreamReader::StartElement:
            m_document.openElement(m_reader.qualifiedName(), static_cast<int>(m_reader.lineNumber()),
                                   static_cast<int>(m_reader.columnNumber()));
            for (const QXmlStreamAttribute &attribute : std::as_const(m_attributes))
                m_document.appendAttribute(attribute.qualifiedName(), attribute.value());
            m_attributes = {}; // while the list is shared, the reader would make a new one for the next tag
            break;
        case QXmlStreamReader::EndElement:
            m_document.closeElement();
            break;
        case QXmlStreamReader::Characters:
            // QDomDocument leaves out what is blank, be it by a reference such as &#160;.
            if (!m_reader.isWhitespace() && (m_reader.isCDATA() || !m_reader.text().trimmed().isEmpty()))
                takeInside(m_reader.isCDATA() ? Kind::CData : Kind::Text, {}, m_reader.text());
            break;
        case QXmlStreamReader::Comment:
            takeInside(Kind::Comment, {}, m_reader.text());
            m_document.appendNote(m_reader.text(), m_reader.lineNumber(), m_reader.columnNumber());
            break;
        case QXmlStreamReader::ProcessingInstruction:
            takeInside(Kind::Instruction, m_reader.processingInstructionTarget(), m_reader.processingInstructionData());
            break;
        case QXmlStreamReader::EntityReference:
            takeInside(Kind::Entity, m_reader.name(), {});
            break;
        default:
            break;
        }
    }

    /// Outside the root nothing counts.
    void takeInside(Kind kind, QStringView name, QStringView text)
    {
        if (depth() > 0)
            m_document.appendNode(kind, name, text);
    }

    TagDocument &m_document;
    QXmlStreamReader m_reader;
    QXmlStreamAttributes m_attributes; // of the last start tag
    qint64 m_charactersLeft;
    bool m_rootSeen = false;
    bool m_documentTypeSeen = false;
};

TagDocument::TagDocument(const QDomElement &element)
{
    m_rootBeforeText = element.nextSibling().isText();
    openElement(element.tagName(), element.lineNumber(), element.columnNumber());
    appendDomChildren(element);
}

TagDocument::Error TagDocument::read(const QByteArray &bytes)
{
    m_nodes.reserve(static_cast<std::size_t>(bytes.size() / 48)); // a tag and its text take about a hundred bytes
    m_blockSize = qMax<qsizetype>(bytes.size(), 256);
    return Reader(*this, bytes).read(bytes);
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
    node.name = keep(name);
    node.text = keep(text);
    node.firstAttribute = static_cast<int>(m_attributes.size());
    return index;
}

void TagDocument::openElement(QStringView name, int line, int column)
{
    const int index = appendNode(Kind::Element, name, {});
    m_open.push_back({index});
    for (; m_placedNotes < m_notes.size(); ++m_placedNotes)
        m_notes[m_placedNotes].tag = index;
    Node &node = m_nodes.back();
    node.line = line;
    node.column = column;
    node.lowerName = std::ranges::none_of(node.name, isUpper) ? node.name : keep(node.name.toString().toLower());
}

void TagDocument::appendAttribute(QStringView name, QStringView value)
{
    m_attributes.push_back({keep(name), value.isEmpty() ? QStringView(u"") : keep(value)});
    ++m_nodes.back().attributeCount;
}

void TagDocument::closeElement()
{
    m_open.pop_back();
    m_placedNotes = m_notes.size();
}

void TagDocument::appendNote(QStringView text, qint64 line, qint64 column)
{
    // Inside the root, the last node is the comment itself and keeps its text already.
    m_notes.push_back({m_open.empty() ? keep(text) : m_nodes.back().text, line, column, kNone});
}

void TagDocument::appendDomChildren(const QDomElement &element)
{
    if (element.hasAttributes()) {
        for (const QString &name : attributeNames(element))
            appendAttribute(name, element.attribute(name));
    }
    for (QDomNode child = element.firstChild(); !child.isNull(); child = child.nextSibling()) {
        if (child.isElement()) {
            openElement(child.toElement().tagName(), child.lineNumber(), child.columnNumber());
            appendDomChildren(child.toElement());
        } else if (child.isCDATASection()) {
            appendNode(Kind::CData, {}, child.nodeValue());
        } else if (child.isText()) {
            appendNode(Kind::Text, {}, child.nodeValue());
        } else if (child.isComment()) {
            appendNode(Kind::Comment, {}, child.nodeValue());
        } else if (child.isProcessingInstruction()) {
            appendNode(Kind::Instruction, child.toProcessingInstruction().target(), child.nodeValue());
        } else if (child.isEntityReference()) {
            appendNode(Kind::Entity, child.nodeName(), {});
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
    text += element.name;
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
        text += element.name;
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
