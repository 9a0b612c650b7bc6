#include "xml/tag_document.h"

#include "findings/limits.h"
#include "xml/rules.h"

#include <QRegularExpression>
#include <QStringConverter>
#include <QXmlStreamReader>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

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

/// Fills a document from the tokens of Qt's XML reader.
class TagDocument::AnyReader {
public:
    AnyReader(TagDocument &document, const QByteArray &bytes)
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
            m_document.openForeignElement(m_reader.qualifiedName(), static_cast<int>(m_reader.lineNumber()),
                                          static_cast<int>(m_reader.columnNumber()));
            for (const QXmlStreamAttribute &attribute : std::as_const(m_attributes))
                m_document.appendAttribute(m_document.keep(attribute.qualifiedName()),
                                           m_document.keep(attribute.value()));
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
        case QXmlStreamReader::Comment: {
            const QStringView text = m_document.keep(m_reader.text());
            if (depth() > 0)
                m_document.appendNode(Kind::Comment, {}, text);
            m_document.appendNote(text, m_reader.lineNumber(), m_reader.columnNumber());
            break;
        }
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
            m_document.appendNode(kind, m_document.keep(name), m_document.keep(text));
    }

    TagDocument &m_document;
    QXmlStreamReader m_reader;
    QXmlStreamAttributes m_attributes; // of the last start tag
    qint64 m_charactersLeft;
    bool m_rootSeen = false;
    bool m_documentTypeSeen = false;
};

TagDocument::Error TagDocument::readAny(const QByteArray &bytes)
{
    m_nodes.reserve(static_cast<std::size_t>(bytes.size() / 48)); // a tag and its text take about a hundred bytes
    m_blockSize = qMax<qsizetype>(bytes.size(), 256);
    return AnyReader(*this, bytes).read(bytes);
}

} // namespace veldmap
