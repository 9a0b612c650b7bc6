#include "headers/c_names.h"
#include "model/visit.h"
#include "text/lines.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using veldmap::appendLine;
using veldmap::Column;
using veldmap::indent;
using veldmap::lineOf;

// A module and what stands around it in a header:
//
//     typedef volatile struct
//     {
//         /// Control
//         REG32                          ctrl;                         //0x80001000
//                                        ^ 35                          ^ 65
//         REG32 Reserved_00000004;                    //0x00000004
//                                                     ^ 48
//     } HWP_UART_T;

namespace {

constexpr int kNameColumn = 35;
constexpr int kAddressColumn = 65;
constexpr int kGapAddressColumn = 48;
constexpr int kCommentWidth = 80;

/// The comment of an element as lines in front of it; nothing for an empty one.
QString commentBlock(const QString &comment, int level)
{
    return comment.isEmpty() ? QString() : convertCommentToCComment(comment, kCommentWidth, level) + u'\n';
}

/// The C qualifiers of \a element, each followed by a blank.
QString keywordsOf(const VMXMLElement &element)
{
    QString text;
    for (const QString &keyword : element.cKeywords)
        text += keyword + u' ';
    return text;
}

/// How a member is declared. In an array, where only the prototype is written, it bears the array's name and count; a
/// member of an array of none is commented out.
struct MemberName {
    MemberName(const VMXMLElement &element, int level) : indentation(indent(level)), name(element.name)
    {
        const auto *array = elementCast<VMArray>(static_cast<const VMXMLElement *>(element.parent));
        if (element.arrayNumber == -1 || !array)
            return;
        name = array->getName();
        subscript = u'[' + array->countExpression.toUpper() + u']';
        isAbsent = array->count() == 0;
        if (isAbsent)
            indentation += "// "_L1;
    }

    QString indentation;
    QString name;
    QString subscript;
    bool isAbsent = false;
};

/// \a text with every line that is not a comment yet made one.
QString commentedOut(QStringView text)
{
    QString result;
    for (const QStringView line : text.split(u'\n', Qt::SkipEmptyParts)) {
        const qsizetype begin = std::ranges::find_if(line, [](QChar c) { return c != u' '; }) - line.begin();
        result += line.first(begin);
        result += line.sliced(begin).startsWith("//"_L1) ? ""_L1 : "// "_L1;
        result += line.sliced(begin);
        result += u'\n';
    }
    return result;
}

/// Writes the members of structures, all into one text, however deep they lie in one another.
class MemberWriter {
public:
    void write(const VMXMLElement &element, int level)
    {
        veldmap::visit(element, [&](const auto &it) { writeKind(it, level); });
    }

    QString takeText() { return std::move(m_text); }

private:
    void writeKind(const VMValuable &valuable, int level)
    {
        const MemberName member(valuable, level);
        const QString type = keywordsOf(valuable) + valuable.getCTypeString();
        m_text += commentBlock(valuable.comment, level);
        const int bits = valuable.getBitSize();
        if (valuable.lowName.isEmpty() || (bits != 16 && bits != 32)) {
            writeLine(valuable, member, type);
            return;
        }
        // The union gives the halves of the register names of their own.
        const QLatin1StringView half = bits == 16 ? "REG8 "_L1 : "REG16 "_L1;
        appendLine(m_text, member.indentation, "union {"_L1);
        writeLine(valuable, member, type);
        appendLine(m_text, indent(level + 1), "struct {"_L1);
        appendLine(m_text, indent(level + 2), half, valuable.lowName, u";");
        appendLine(m_text, indent(level + 2), half, valuable.highName, u";");
        appendLine(m_text, indent(level + 1), "};"_L1);
        appendLine(m_text, member.indentation, "};"_L1);
    }

    void writeKind(const VMStruct &structure, int level)
    {
        const MemberName member(structure, level);
        const qsizetype begin = m_text.size();
        m_text += keywordsOf(structure);
        m_text += commentBlock(structure.comment, level);
        if (structure.isInstance() || (structure.parent && !structure.declaredType.isEmpty())) {
            writeLine(structure, member, ESDRTypeConvert(structure.getTypeString()));
        } else {
            appendLine(m_text, member.indentation, "struct"_L1);
            appendLine(m_text, member.indentation, u"{");
            for (const auto &child : structure.memberList)
                write(*child, level + 1);
            appendLine(m_text, member.indentation, "} "_L1, member.name, member.subscript, u";");
        }
        if (!member.isAbsent)
            return;
        // Qualifiers and members have lines of their own, which must not be left behind.
        const QString text = commentedOut(QStringView(m_text).sliced(begin));
        m_text.truncate(begin);
        m_text += text;
    }

    void writeKind(const VMArray &array, int level)
    {
        if (array.declaredType.isEmpty()) {
            write(*array.prototype, level);
            return;
        }
        m_text += commentBlock(array.comment, level);
        writeLine(array, MemberName(array, level), keywordsOf(array) + ESDRTypeConvert(array.declaredType.toUpper()));
    }

    void writeKind(const VMHole &hole, int level)
    {
        // The widest register that lies aligned in the gap and fills it.
        const bool fills32 = hole.holeBits % 32 == 0 && hole.offset % 4 == 0;
        const bool fills16 = hole.holeBits % 16 == 0 && hole.offset % 2 == 0;
        const int unit = fills32 ? 32 : fills16 ? 16 : 8;
        const int count = hole.holeBits / unit;
        const QString place = veldmap::hex8(hole.offset);
        appendLine(m_text, indent(level), count == 0 ? "// "_L1 : ""_L1, "REG"_L1, unit, " Reserved_"_L1, place,
                   count > 1 ? u'[' + QString::number(count) + u']' : QString(), u";", Column{kGapAddressColumn},
                   "//0x"_L1, place);
    }

    void writeKind(const VMMemory &memory, int level)
    {
        appendLine(m_text, indent(level), memory.memorySize == 0 ? "// "_L1 : ""_L1, keywordsOf(memory), "UINT8 "_L1,
                   memory.getName(), u"[", memory.memorySize, u"];", Column{kGapAddressColumn}, "//0x"_L1,
                   veldmap::hex8(memory.offset));
    }

    void writeKind(const VMXMLElement &, int) {}

    /// The line of a member that has a type word.
    void writeLine(const VMXMLElement &element, const MemberName &member, const QString &type)
    {
        appendLine(m_text, member.indentation, type, Column{kNameColumn}, member.name, member.subscript, u";",
                   Column{kAddressColumn}, "//"_L1, element.getAddressString());
    }

    QString m_text;
};

/// The C definition of a template.
struct TypedefOf {
    QString operator()(const VMStruct &structure) const
    {
        if (!structure.declaredType.isEmpty())
            return (*this)(static_cast<const VMXMLElement &>(structure));
        MemberWriter members;
        for (const auto &member : structure.memberList)
            members.write(*member, 1);
        QString text = "typedef "_L1 + keywordsOf(structure) + "struct\n{\n"_L1 + members.takeText();
        const QString type = structure.getTypeString();
        if (!structure.isTypedef)
            appendLine(text, "} HWP_"_L1, type.toUpper(), "_T;"_L1);
        else
            appendLine(text, "} "_L1, ESDRTypeConvert(type), "; //Size : 0x"_L1,
                       veldmap::hexDigits(static_cast<quint32>(structure.sizeOf())));
        return text;
    }

    QString operator()(const VMValuable &valuable) const
    {
        if (valuable.bitFields.empty() || valuable.enumTemplate)
            return (*this)(static_cast<const VMXMLElement &>(valuable));
        QString text = u"typedef struct\n{\n"_s;
        for (const auto &field : valuable.bitFields)
            appendLine(text, indent(1), ESDRTypeConvert(valuable.declaredType), Column{kNameColumn}, field->getName(),
                       u":", field->getBitSize(), u";");
        return text + "} "_L1 + ESDRTypeConvert(valuable.typedefName) + u';';
    }

    QString operator()(const VMPointer &pointer) const
    {
        return plain(pointer, ESDRTypeConvert(pointer.declaredType) + u'*', {});
    }

    QString operator()(const VMArray &array) const
    {
        return plain(array, ESDRTypeConvert(array.prototype->declaredType),
                     u'[' + array.countExpression.toUpper() + u']');
    }

    QString operator()(const VMXMLElement &element) const
    {
        return plain(element, ESDRTypeConvert(element.declaredType), {});
    }

    static QString plain(const VMXMLElement &element, const QString &type, const QString &subscript)
    {
        return "typedef "_L1 + keywordsOf(element) + type + u' ' + ESDRTypeConvert(element.typedefName) + subscript +
               u';';
    }
};

} // namespace

QString VMXMLElement::getCTypeString() const
{
    return ESDRTypeConvert(getTypeString().toUpper());
}

QString VMPointer::getCTypeString() const
{
    return ESDRTypeConvert(pointedType) + u'*';
}

QString VMXMLElement::c_serialize(int level) const
{
    MemberWriter writer;
    writer.write(*this, level);
    return writer.takeText();
}

QString VMXMLElement::c_typedefSerialize() const
{
    return veldmap::visit(*this, TypedefOf());
}

QString VMIntVar::c_serialize(bool enumEntry) const
{
    if (isRange)
        return {};
    const bool isSpacer = veldmap::isSpacer(*this);
    QString text = (isSpacer ? u"\n"_s : QString()) + commentBlock(comment, 0);
    if (isSpacer)
        return text;
    if (!enumEntry)
        return text + lineOf("#define "_L1, name.toUpper(), Column{48}, " ("_L1, leftExpression.toUpper(), u")");
    const QString entry =
        lineOf(indent(1), name.toUpper(), Column{47}, " = 0x"_L1, veldmap::hex8(static_cast<quint32>(leftValue)));
    return text + entry.chopped(1); // what follows the entry decides on its line feed
}

QString VMEnum::c_serialize(int) const
{
    QStringList entries;
    for (const VMIntVar &entry : *this)
        entries += entry.c_serialize(true);
    return "typedef enum {\n"_L1 + entries.join(",\n"_L1) + "\n} "_L1 + ESDRTypeConvert(name) + u';';
}
