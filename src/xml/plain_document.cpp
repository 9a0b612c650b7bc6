#include "xml/tag_document.h"

#include "findings/limits.h"

#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <string_view>

using namespace Qt::StringLiterals;

// Nearly all descriptions have the form that is read here: tags with attributes, texts, CDATA and comments, in UTF-8.
// Whatever is not sure to be well formed and to mean here what Qt's reader makes of it is left to that one, which alone
// has words for what is wrong; nothing here judges a document.
//
// The text of the file is read where it stands. References and line ends only ever get shorter, so what they mean takes
// the place of what was written.

namespace veldmap {

namespace {

/// What a character may do; one that is none of these, a control character, is not looked at here.
enum Use : quint8 {
    kBeginsName = 1,
    kInName = 2,
    kInText = 4,  ///< stands for itself in a text
    kInValue = 8, ///< the same in an attribute, whatever its quotes
    kBlank = 16,
};

constexpr std::array<quint8, 128> usesOfCharacters()
{
    std::array<quint8, 128> uses = {};
    for (char16_t c = u' '; c < 128; ++c)
        uses[c] = kInText | kInValue;
    for (const char16_t c : {u'\n', u'\t'}) // which an attribute has as blanks
        uses[c] = kInText;
    for (const char16_t c : {u' ', u'\n', u'\t'})
        uses[c] |= kBlank;
    for (const char16_t c : {u'<', u'&', u']'})
        uses[c] &= static_cast<quint8>(~kInText);
    for (const char16_t c : {u'<', u'&', u'"', u'\''})
        uses[c] &= static_cast<quint8>(~kInValue);
    for (char16_t c = u'0'; c <= u'9'; ++c)
        uses[c] |= kInName;
    for (const char16_t c : {u'-', u'.'})
        uses[c] |= kInName;
    for (char16_t c = u'A'; c <= u'Z'; ++c) {
        uses[c] |= kInName | kBeginsName;
        uses[c + (u'a' - u'A')] |= kInName | kBeginsName;
    }
    uses[u'_'] |= kInName | kBeginsName;
    return uses;
}
constexpr std::array<quint8, 128> kUses = usesOfCharacters();

bool mayDo(char16_t c, Use use)
{
    return c < 128 && (kUses[c] & use) != 0;
}

/// As mayDo, where characters beyond ASCII stand for themselves too.
bool standsForItself(char16_t c, Use use)
{
    return c < 128 ? (kUses[c] & use) != 0 : c < 0xFFFE;
}

/// The text of a file in UTF-8, each line end a line feed; null where it is in another encoding.
QString decoded(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(bytes);
    if (decoder.hasError())
        return {};
    if (bytes.contains('\r'))
        text.replace("\r\n"_L1, "\n"_L1).replace(u'\r', u'\n');
    return text;
}

struct Reference {
    std::u16string_view name;
    char16_t character;
};
constexpr Reference kReferences[] = {
    {u"lt;", u'<'}, {u"gt;", u'>'}, {u"amp;", u'&'}, {u"quot;", u'"'}, {u"apos;", u'\''}};

} // namespace

/// Fills a document from its text, which ends with a 0. Each operation is false where the form is not plain.
class TagDocument::PlainReader {
public:
    /// \a document has the text of \a bytes.
    PlainReader(TagDocument &document, const QByteArray &bytes)
        : m_document(document), m_begin(reinterpret_cast<char16_t *>(document.m_text.data())),
          m_end(m_begin + document.m_text.size()), m_at(m_begin)
    {
        // In ASCII the places in the bytes are those in the text, and found faster.
        if (bytes.size() == document.m_text.size() && !bytes.contains('\r'))
            findLineEnds(bytes, '\n');
        else
            findLineEnds(document.m_text, u'\n');
    }

    bool read()
    {
        if (!skipDeclaration())
            return false;
        while (true) {
            if (!readText())
                return false;
            if (m_at == m_end)
                return m_document.m_open.empty() && !m_document.m_nodes.empty();
            if (!readMarkup())
                return false;
        }
    }

private:
    template <typename Text, typename Character>
    void findLineEnds(const Text &text, Character lineFeed)
    {
        m_lineEnds.reserve(static_cast<std::size_t>(text.size() / 32)); // a line has some fifty characters
        for (qsizetype at = text.indexOf(lineFeed); at >= 0; at = text.indexOf(lineFeed, at + 1))
            m_lineEnds.push_back(at);
        m_lineEnds.push_back(text.size());
    }

    bool startsWith(std::u16string_view text) const
    {
        return static_cast<std::size_t>(m_end - m_at) >= text.size() && std::u16string_view(m_at, text.size()) == text;
    }
    bool skip(std::u16string_view text)
    {
        if (!startsWith(text))
            return false;
        m_at += text.size();
        return true;
    }
    bool skipBlanks()
    {
        const char16_t *begin = m_at;
        while (mayDo(*m_at, kBlank))
            ++m_at;
        return m_at != begin;
    }
    bool skipEqualSign()
    {
        skipBlanks();
        if (*m_at != u'=')
            return false;
        ++m_at;
        skipBlanks();
        return *m_at == u'"' || *m_at == u'\'';
    }

    /// Skips "<?xml version="1.0" encoding="UTF-8"?>", if it is there.
    bool skipDeclaration()
    {
        if (!skip(u"<?xml"))
            return true;
        if (!skipBlanks() || !skip(u"version") || !skipEqualSign() || skipValue() != "1.0"_L1)
            return false;
        if (skipBlanks() && skip(u"encoding") &&
            (!skipEqualSign() || skipValue().compare("utf-8"_L1, Qt::CaseInsensitive) != 0))
            return false;
        skipBlanks();
        return skip(u"?>");
    }

    /// Skips the quoted value of the declaration; null if it has no end.
    QStringView skipValue()
    {
        const char16_t quote = *m_at++;
        const char16_t *begin = m_at;
        while (m_at != m_end && *m_at != quote)
            ++m_at;
        return m_at == m_end ? QStringView() : QStringView(begin, m_at++);
    }

    bool readMarkup()
    {
        switch (m_at[1]) {
        case u'/':
            return readEndTag();
        case u'!':
            return startsWith(u"<!--") ? readComment() : readCData();
        default:
            return readStartTag();
        }
    }

    /// A name at the present place; empty when there is none. One beyond ASCII, or with a prefix, is not plain.
    QStringView readName()
    {
        const char16_t *begin = m_at;
        if (!mayDo(*m_at, kBeginsName))
            return {};
        do
            ++m_at;
        while (mayDo(*m_at, kInName));
        return {begin, m_at};
    }

    bool readStartTag()
    {
        ++m_at;
        const QStringView name = readName();
        const bool isSecondRoot = m_document.m_open.empty() && !m_document.m_nodes.empty();
        if (name.isEmpty() || isSecondRoot || m_document.m_open.size() >= static_cast<std::size_t>(limits::kTagDepth))
            return false;
        m_document.openElement(name, lowerName(name), 0, 0);
        const std::size_t index = m_document.m_nodes.size() - 1;
        while (true) {
            const bool isParted = skipBlanks();
            if (*m_at == u'>' || *m_at == u'/')
                break;
            if (!isParted || !readAttribute(m_document.m_nodes[index]))
                return false;
        }
        const bool isEmpty = *m_at == u'/';
        if (isEmpty && *++m_at != u'>')
            return false;
        ++m_at;
        Node &node = m_document.m_nodes[index];
        node.line = lineHere();
        node.column = columnHere();
        if (isEmpty)
            m_document.closeElement();
        return true;
    }

    QStringView lowerName(QStringView name)
    {
        return std::ranges::none_of(name, [](QChar c) { return c >= u'A' && c <= u'Z'; })
                   ? name
                   : m_document.keep(name.toString().toLower());
    }

    /// Reads an attribute of the last element.
    bool readAttribute(const Node &element)
    {
        constexpr int kMost = 32; // since each is compared with those in front
        const QStringView name = readName();
        if (name.isEmpty() || name == "xmlns"_L1 || element.attributeCount == kMost || !skipEqualSign())
            return false;
        for (int earlier = 0; earlier < element.attributeCount; ++earlier) {
            if (m_document.m_attributes[static_cast<std::size_t>(element.firstAttribute + earlier)].name == name)
                return false;
        }
        const char16_t quote = *m_at++;
        char16_t *begin = m_at;
        while (standsForItself(*m_at, kInValue))
            ++m_at;
        char16_t *end = m_at; // of what the value is
        while (*m_at != quote) {
            const char16_t c = *m_at;
            if (c == u'&') {
                if (!readReference(end))
                    return false;
            } else if (standsForItself(c, kInValue) || mayDo(c, kBlank) || c == u'"' || c == u'\'') {
                *end++ = mayDo(c, kBlank) ? u' ' : c;
                ++m_at;
            } else {
                return false;
            }
        }
        ++m_at;
        m_document.appendAttribute(name, {begin, end});
        return true;
    }

    /// Reads a reference, and puts what it stands for at \a end, which moves behind that.
    bool readReference(char16_t *&end)
    {
        ++m_at;
        if (*m_at == u'#')
            return readCharacterReference(end);
        for (const Reference &reference : kReferences) {
            if (skip(reference.name)) {
                *end++ = reference.character;
                return true;
            }
        }
        return false;
    }

    bool readCharacterReference(char16_t *&end)
    {
        ++m_at;
        const bool isHexadecimal = *m_at == u'x';
        if (isHexadecimal)
            ++m_at;
        constexpr qsizetype kLongest = 8;
        const qsizetype length = QStringView(m_at, std::min<qsizetype>(m_end - m_at, kLongest + 1)).indexOf(u';');
        if (length <= 0)
            return false;
        const QStringView digits(m_at, length);
        const bool areDigits = std::ranges::all_of(digits, [&](QChar c) {
            const char16_t folded = c.unicode() | 0x20;
            return (c >= u'0' && c <= u'9') || (isHexadecimal && folded >= u'a' && folded <= u'f');
        });
        const quint32 code = areDigits ? digits.toUInt(nullptr, isHexadecimal ? 16 : 10) : 0;
        const bool isCharacter = code == u'\t' || code == u'\n' || code == u'\r' || (code >= u' ' && code < 0xD800) ||
                                 (code >= 0xE000 && code < 0xFFFE) || (code >= 0x10000 && code <= 0x10FFFF);
        if (!isCharacter)
            return false;
        if (QChar::requiresSurrogates(code)) {
            *end++ = QChar::highSurrogate(code);
            *end++ = QChar::lowSurrogate(code);
        } else {
            *end++ = static_cast<char16_t>(code);
        }
        m_at += length + 1;
        return true;
    }

    bool readEndTag()
    {
        m_at += 2;
        const QStringView name = readName();
        if (m_document.m_open.empty() ||
            name != m_document.m_nodes[static_cast<std::size_t>(m_document.m_open.back().node)].text)
            return false;
        skipBlanks();
        if (*m_at != u'>')
            return false;
        ++m_at;
        m_document.closeElement();
        return true;
    }

    /// Reads the text up to the next markup. Outside the root there are blanks alone.
    bool readText()
    {
        char16_t *begin = m_at;
        skipBlanks();
        const bool isInside = !m_document.m_open.empty();
        if (*m_at == u'<' || (m_at == m_end && !isInside))
            return true;
        if (!isInside)
            return false;
        while (standsForItself(*m_at, kInText))
            ++m_at;
        char16_t *end = m_at; // of what the text is
        while (*m_at != u'<') {
            const char16_t c = *m_at;
            if (c == u'&') {
                if (!readReference(end))
                    return false;
            } else if (standsForItself(c, kInText) || (c == u']' && !startsWith(u"]]>"))) {
                *end++ = c;
                ++m_at;
            } else {
                return false;
            }
        }
        const QStringView text(begin, end);
        if (!text.trimmed().isEmpty()) // which it may be by a reference
            m_document.appendNode(Kind::Text, {}, text);
        return true;
    }

    /// The text up to \a last, behind which the present place is then; null where it has no end or other characters.
    QStringView readUpTo(std::u16string_view last)
    {
        char16_t *begin = m_at;
        for (; m_at != m_end; ++m_at) {
            if (*m_at == last.front() && startsWith(last)) {
                m_at += last.size();
                return {begin, m_at - last.size()};
            }
            const char16_t c = *m_at;
            const bool isMarkup = c == u'<' || c == u'&'; // which stand for themselves here
            if (c < 128 ? kUses[c] == 0 && !isMarkup : c >= 0xFFFE)
                break;
        }
        return {};
    }

    bool readComment()
    {
        m_at += 4;
        const QStringView text = readUpTo(u"--");
        if (text.isNull() || *m_at != u'>')
            return false;
        ++m_at;
        if (!m_document.m_open.empty())
            m_document.appendNode(Kind::Comment, {}, text);
        const int line = lineHere();
        m_document.appendNote(text, line, columnHere());
        return true;
    }

    bool readCData()
    {
        if (m_document.m_open.empty() || !skip(u"<![CDATA["))
            return false;
        const QStringView text = readUpTo(u"]]>");
        if (text.trimmed().isEmpty())
            return false;
        m_document.appendNode(Kind::CData, {}, text);
        return true;
    }

    /// The line of the present place, which only ever moves on.
    int lineHere()
    {
        const qsizetype here = m_at - m_begin;
        while (m_lineEnds[m_line] < here)
            ++m_line;
        return static_cast<int>(m_line) + 1;
    }
    /// The characters in front of it, when its line is known.
    int columnHere() const
    {
        const qsizetype lineBegin = m_line == 0 ? 0 : m_lineEnds[m_line - 1] + 1;
        return static_cast<int>(m_at - m_begin - lineBegin);
    }

    TagDocument &m_document;
    char16_t *const m_begin;
    char16_t *const m_end;
    char16_t *m_at;                    // the present place
    std::vector<qsizetype> m_lineEnds; // where the line feeds are, and the end of the text
    std::size_t m_line = 0;            // from 0
};

bool TagDocument::readPlain(const QByteArray &bytes)
{
    m_text = decoded(bytes);
    // A tag has some fifty characters, and a text or two attributes. What is not filled is not touched either.
    m_nodes.reserve(static_cast<std::size_t>(bytes.size() / 32));
    m_attributes.reserve(static_cast<std::size_t>(bytes.size() / 24));
    return !m_text.isEmpty() && PlainReader(*this, bytes).read();
}

} // namespace veldmap
