#pragma once

#include "findings/refusal.h"
#include <veldmap/veldmap_export.h>

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <span>
#include <utility>
#include <vector>

class QDomElement;

namespace veldmap {

class Tag;

/// The tags of one description, compact and in the order of the document. What a handler needs of a document is here:
/// names, attributes in their order, texts, and the place of each tag. A QDomDocument of the same file takes many times
/// as long to build and to free.
///
/// Owns all its text, which is that of the file as far as it stands there as it is meant; a Tag is a view that must not
/// outlive it. Texts of blanks alone are left out.
class VELDMAP_EXPORT TagDocument {
public:
    /// What is wrong with a document, and where.
    struct Error {
        Refusal refusal; ///< false when nothing is
        qint64 line = 0;
        qint64 column = 0;

        explicit operator bool() const { return bool(refusal); }
    };

    TagDocument() = default;
    /// The tags of \a element and below it.
    explicit TagDocument(const QDomElement &element);
    TagDocument(const TagDocument &) = delete;
    TagDocument &operator=(const TagDocument &) = delete;

    /// Reads a document from its file's \a bytes. Refuses what is not well formed, with the words and the place that
    /// QDomDocument gives, and tags or entities beyond the limits of a load.
    [[nodiscard]] Error read(const QByteArray &bytes);

    // The two ways to do it. Both are given to a new document, and what they make of the same bytes is the same.

    /// Reads a document whose form is plain, as nearly all are: UTF-8, without document type, processing instructions
    /// and entities of its own, well formed and within the limits. False of any other, and then the document is of no
    /// use.
    [[nodiscard]] bool readPlain(const QByteArray &bytes);
    /// Reads any document with Qt's XML reader, which takes several times as long.
    [[nodiscard]] Error readAny(const QByteArray &bytes);

    /// The document element.
    Tag root() const;

    /// Gives each tag the place that \a placeOf has, line and column, for the line in which it stands.
    void movePlaces(const std::function<std::pair<int, int>(int line)> &placeOf);

    struct Attribute {
        QStringView name;
        QStringView value;
    };
    /// What an author has noted as "<!-- ... -->", and its place: behind that.
    struct Note {
        QStringView text;
        qint64 line;
        qint64 column;
        int tag; ///< number of the tag that follows in the same tag, -1 when none does
    };
    /// The notes of a document that was read from bytes, in its order, also those in front of the root.
    std::span<const Note> notes() const { return m_notes; }

private:
    friend class Tag;
    enum class Kind : quint8 { Element, Text, CData, Comment, Instruction, Entity };
    static constexpr int kNone = -1;

    struct Node {
        Kind kind = Kind::Element;
        QStringView name; // of an element in lower case, of an instruction or an entity as written
        QStringView text; // of an element its name as written
        int line = 0;
        int column = 0;
        int firstChild = kNone;
        int nextSibling = kNone;
        int firstAttribute = 0;
        int attributeCount = 0;
    };
    struct OpenNode {
        int node;
        int lastChild = kNone;
    };

    class AnyReader;
    class PlainReader;
    static bool isText(const Node *node);
    // What these are given has to stay, see keep().
    int appendNode(Kind kind, QStringView name, QStringView text);
    void openElement(QStringView name, QStringView lowerName, int line, int column);
    void appendAttribute(QStringView name, QStringView value);
    void closeElement();
    void appendNote(QStringView text, qint64 line, qint64 column);

    void appendDomChildren(const QDomElement &element);
    void openForeignElement(QStringView name, int line, int column);
    QStringView keep(QStringView text);

    std::vector<Node> m_nodes; // in document order; the first is the root
    std::vector<Attribute> m_attributes;
    std::vector<OpenNode> m_open;
    std::vector<Note> m_notes;
    std::size_t m_placedNotes = 0;                     // in front, whose tag is decided
    QString m_text;                                    // of the file, when its form is plain
    std::vector<std::unique_ptr<char16_t[]>> m_blocks; // other text; blocks never move
    qsizetype m_blockSize = 256;                       // of the next one, unless a text is longer
    char16_t *m_freeText = nullptr;                    // behind what the last one holds
    qsizetype m_blockLeft = 0;
    bool m_rootBeforeText = false; // in the document that the root was taken from
};

/// One tag of a TagDocument.
class VELDMAP_EXPORT Tag {
public:
    bool isNull() const { return m_node == TagDocument::kNone; }
    /// The name in lower case, as tags are compared.
    QStringView name() const { return node().name; }
    QStringView nameAsWritten() const { return node().text; }
    /// The place behind the ">" of the start tag, both counted as QDomNode does.
    int lineNumber() const { return node().line; }
    int columnNumber() const { return node().column; }
    /// Counts the tags of a document in its order, with gaps.
    int number() const { return m_node; }
    /// All attributes, in the order of the document.
    std::span<const TagDocument::Attribute> attributes() const
    {
        return std::span(m_document->m_attributes)
            .subspan(static_cast<std::size_t>(node().firstAttribute), static_cast<std::size_t>(node().attributeCount));
    }
    /// The value of the attribute \a attribute, null when the tag has none of that name.
    QStringView attribute(QStringView attribute) const;

    /// The first child tag; what is no tag is passed over.
    Tag firstChild() const { return {*m_document, firstElement(node().firstChild)}; }
    Tag nextSibling() const { return {*m_document, firstElement(node().nextSibling)}; }

    bool isEmpty() const { return node().firstChild == TagDocument::kNone; }
    /// Whether \a isFine holds for all that is written in the tag and below it: names, values and texts. It does not
    /// for what is more than tags and texts.
    bool isAll(bool (*isFine)(QStringView text)) const { return isAllBelow(m_node, isFine); }
    /// The text of a tag that holds one run of text and has no attributes; null for any other.
    QStringView plainText() const;
    /// All text in the tag and below it as it is meant, without tags and notes.
    QString allText() const;
    /// What stands between the start and the end tag as serialized() has it, on one line: blanks and line ends in a row
    /// are one blank, those at the ends none. A tag "<br/>" is "<br>". Null for a tag with attributes, or with anything
    /// but texts and such tags inside.
    QString lineOfText() const;
    /// The tag with all below it as text, as QDomNode::save writes it with an indent of 0, attributes in the order of
    /// the document.
    QString serialized() const;

private:
    friend class TagDocument;
    Tag(const TagDocument &document, int node) : m_document(&document), m_node(node) {}

    const TagDocument::Node &node() const { return m_document->m_nodes[static_cast<std::size_t>(m_node)]; }
    const TagDocument::Node *nodeAt(int index) const;
    int firstElement(int index) const;
    bool isAllBelow(int index, bool (*isFine)(QStringView text)) const;
    void appendSerialized(int index, QString &text) const;
    void appendElement(const TagDocument::Node &element, QString &text) const;
    void appendTextBelow(int index, QString &text) const;

    const TagDocument *m_document;
    int m_node;
};

/// \a text as it stands in a document: markup characters as entities, in an attribute's value quotes and line ends too.
QString encodedText(QStringView text, bool isAttribute);

} // namespace veldmap
