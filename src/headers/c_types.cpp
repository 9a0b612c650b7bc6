#include "text/lines.h"
#include "headers/c_names.h"
#include "headers/template_macros.h"
#include "model/aggregates.h"
#include "model/pointer.h"
#include "model/root_archive.h"
#include "model/variables.h"

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

/// The line of a member that has a type word.
QString memberLine(const VMXMLElement &element, const MemberName &member, const QString &type)
{
    return lineOf(member.indentation, type, Column{kNameColumn}, member.name, member.subscript, u";",
                  Column{kAddressColumn}, "//"_L1, element.getAddressString());
}

/// \a text with every line that is not a comment yet made one.
QString commentedOut(const QString &text)
{
    QString result;
    for (const QStringView line : QStringView(text).split(u'\n', Qt::SkipEmptyParts)) {
        const qsizetype begin = std::ranges::find_if(line, [](QChar c) { return c != u' '; }) - line.begin();
        result += line.first(begin);
        result += line.sliced(begin).startsWith("//"_L1) ? ""_L1 : "// "_L1;
        result += line.sliced(begin);
        result += u'\n';
    }
    return result;
}

/// The union that gives the halves of a register names of their own, around the register's \a memberLine.
QString halvesUnion(const VMValuable &valuable, const QString &memberLine, const QString &indentation, int level)
{
    const QLatin1StringView half = valuable.getBitSize() == 16 ? "REG8 "_L1 : "REG16 "_L1;
    return lineOf(indentation, "union {"_L1) + memberLine + lineOf(indent(level + 1), "struct {"_L1) +
           lineOf(indent(level + 2), half, valuable.lowName, u";") +
           lineOf(indent(level + 2), half, valuable.highName, u";") + lineOf(indent(level + 1), "};"_L1) +
           lineOf(indentation, "};"_L1);
}

} // namespace

QString VMXMLElement::getCTypeString() const
{
    return ESDRTypeConvert(getTypeString().toUpper());
}

QString VMPointer::getCTypeString() const
{
    return ESDRTypeConvert(pointedType) + u'*';
}

QString VMXMLElement::c_serialize(int) const
{
    return {};
}

QString VMValuable::c_serialize(int level) const
{
    const MemberName member(*this, level);
    QString line = memberLine(*this, member, keywordsOf(*this) + getCTypeString());
    if (!lowName.isEmpty() && (getBitSize() == 16 || getBitSize() == 32))
        line = halvesUnion(*this, line, member.indentation, level);
    QString text = commentBlock(comment, level);
    text += line;
    return text;
}

QString VMStruct::c_serialize(int level) const
{
    const MemberName member(*this, level);
    QString text = keywordsOf(*this) + commentBlock(comment, level);
    const bool isReference = parent && (parent->getType() == XML_ROOT_ARCHIVE || !declaredType.isEmpty());
    if (isReference) {
        text += memberLine(*this, member, ESDRTypeConvert(getTypeString()));
    } else {
        text += lineOf(member.indentation, "struct"_L1) + lineOf(member.indentation, u"{");
        for (const auto &child : memberList)
            text += child->c_serialize(level + 1);
        text += lineOf(member.indentation, "} "_L1, member.name, member.subscript, u";");
    }
    // Qualifiers and members have lines of their own, which must not be left behind.
    return member.isAbsent ? commentedOut(text) : text;
}

QString VMArray::c_serialize(int level) const
{
    if (declaredType.isEmpty())
        return prototype->c_serialize(level);
    return commentBlock(comment, level) +
           memberLine(*this, MemberName(*this, level), keywordsOf(*this) + ESDRTypeConvert(declaredType.toUpper()));
}

QString VMHole::c_serialize(int level) const
{
    // The widest register that lies aligned in the gap and fills it.
    const int unit = holeBits % 32 == 0 && offset % 4 == 0 ? 32 : holeBits % 16 == 0 && offset % 2 == 0 ? 16 : 8;
    const int count = holeBits / unit;
    const QString place = veldmap::hex8(offset);
    return lineOf(indent(level), count == 0 ? "// "_L1 : ""_L1, "REG"_L1, unit, " Reserved_"_L1, place,
                  count > 1 ? u'[' + QString::number(count) + u']' : QString(), u";", Column{kGapAddressColumn},
                  "//0x"_L1, place);
}

QString VMMemory::c_serialize(int level) const
{
    return lineOf(indent(level), memorySize == 0 ? "// "_L1 : ""_L1, keywordsOf(*this), "UINT8 "_L1, getName(), u"[",
                  memorySize, u"];", Column{kGapAddressColumn}, "//0x"_L1, veldmap::hex8(offset));
}

QString VMXMLElement::c_typedefSerialize() const
{
    return "typedef "_L1 + keywordsOf(*this) + ESDRTypeConvert(declaredType) + u' ' + ESDRTypeConvert(typedefName) +
           u';';
}

QString VMPointer::c_typedefSerialize() const
{
    return "typedef "_L1 + keywordsOf(*this) + ESDRTypeConvert(declaredType) + "* "_L1 + ESDRTypeConvert(typedefName) +
           u';';
}

QString VMArray::c_typedefSerialize() const
{
    return "typedef "_L1 + keywordsOf(*this) + ESDRTypeConvert(prototype->declaredType) + u' ' +
           ESDRTypeConvert(typedefName) + u'[' + countExpression.toUpper() + "];"_L1;
}

QString VMStruct::c_typedefSerialize() const
{
    if (!declaredType.isEmpty())
        return VMXMLElement::c_typedefSerialize();
    QString text = "typedef "_L1 + keywordsOf(*this) + "struct\n{\n"_L1;
    for (const auto &member : memberList)
        text += member->c_serialize(1);
    if (!isTypedef)
        appendLine(text, "} HWP_"_L1, getTypeString().toUpper(), "_T;"_L1);
    else
        appendLine(text, "} "_L1, ESDRTypeConvert(getTypeString()), "; //Size : 0x"_L1,
                   veldmap::hexDigits(static_cast<quint32>(sizeOf())));
    return text;
}

QString VMValuable::c_typedefSerialize() const
{
    if (bitFields.empty() || enumTemplate)
        return VMXMLElement::c_typedefSerialize();
    QString text = u"typedef struct\n{\n"_s;
    for (const auto &field : bitFields)
        text += lineOf(indent(1), ESDRTypeConvert(declaredType), Column{kNameColumn}, field->getName(), u":",
                       field->getBitSize(), u";");
    return text + "} "_L1 + ESDRTypeConvert(typedefName) + u';';
}

QString VMXMLElement::c_content() const
{
    const VMRootArchive *root = getRootArchive();
    QString text;
    if (root)
        text += root->c_getMatchingInstancesBaseAddresses(this);
    text += "\n\n"_L1;
    text += c_typedefSerialize();
    text += u'\n';
    const auto *structure = elementCast<VMStruct>(this);
    if (structure && !structure->isTypedef) {
        if (root)
            text += root->c_getMatchingInstancesInstanciation(this);
        text += u'\n';
    }
    text += veldmap::templateMacros(*this);
    return text;
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
