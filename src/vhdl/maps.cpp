#include "vhdl/maps.h"

#include "model/kinds.h"
#include "model/visit.h"
#include "text/lines.h"
#include "vhdl/comments.h"
#include "vhdl/notation.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

// A register in a package: its word address, its fields in the register and in the packed word, and the range of that.
//
//     constant at_CTRL:                           integer := 2;
//         -- logical map
//         constant l_Enable:                              integer := 0;
//         subtype  l_Mode is                              integer range 5 downto 4;
//         -- physical map
//         constant p_Enable:                              integer := 0;
//         subtype  p_Mode is                              integer range 2 downto 1;
//         subtype range_ctrl is                   integer range 2 downto 0;
//                                                 ^ 48, in the maps counted without the indentation

namespace veldmap {

namespace {

constexpr Column kValueColumn = {48};
constexpr QLatin1StringView kLogical = "l_"_L1;
constexpr QLatin1StringView kPhysical = "p_"_L1;
constexpr QLatin1StringView kNoRemark = ""_L1;
constexpr QLatin1StringView kNotContiguous = "-- Not Contiguous BitGroup: "_L1; // makes the line a comment

QString vhdlExpression(const QString &expression)
{
    return vhdl_clean_expr(expression.toUpper());
}

/// Whether an array of \a element is one of vectors.
bool isBusRegister(const VMXMLElement &element)
{
    const ScalarKind *kind = scalarKindOf(element.getType());
    return kind && kind->isBusRegister;
}

} // namespace

/// The positions of a field or a group as the tree has them.
struct MapWriter::Span {
    int high = 0;
    int low = 0;

    /// Those of all fields of \a group, of which \a up and \a down are what counts.
    static Span of(const VMBitGroup &group, int VMBitField::*up, int VMBitField::*down)
    {
        if (group.isEmpty())
            return {};
        const auto byUp = [&](const VMBitField *field) { return field->*up; };
        const auto byDown = [&](const VMBitField *field) { return field->*down; };
        return {byUp(*std::ranges::max_element(group, {}, byUp)), byDown(*std::ranges::min_element(group, {}, byDown))};
    }
};

/// What the line of a field or a group in one of the maps is made of.
struct MapWriter::Definition {
    QLatin1StringView prefix;
    QString name;
    QString high;
    QString low;
    const VMValuable *valuable; ///< which holds the field or group
    const VMXMLElement *cause;  ///< what the description declares it by: the field, or the group's valuable
    Span span;
    QLatin1StringView rangeRemark; ///< in front of a range
};

MapWriter::MapWriter(QStringList &seen, DeclarationListener *listener, const FindVariable &find)
    : m_seen(seen), m_known(seen.cbegin(), seen.cend()), m_listener(listener), m_find(find)
{
}

void MapWriter::write(const VMXMLElement &element, int level)
{
    visit(element, [&](const auto &it) { writeKind(it, level); });
}

void MapWriter::writeKind(const VMStruct &structure, int level)
{
    for (const auto &member : structure.memberList)
        write(*member, level + 1);
}

/// The prototype stands for all elements: it writes their maps, under the array's name. Registers get an address each,
/// and a type for as many vectors.
void MapWriter::writeKind(const VMArray &array, int level)
{
    if (array.count() == 0)
        return;
    write(*array.prototype, level);
    if (!isBusRegister(*array.prototype))
        return;
    const QString &name = array.getName();
    const QString upperName = name.toUpper();
    for (int index = 0; index < array.count(); ++index)
        writeAddress(*array.memberList[static_cast<std::size_t>(index)], upperName + u'_' + QString::number(index),
                     level);
    const QString count = QString::number(array.count());
    m_text += u'\n';
    m_isBehindError = false;
    qsizetype begin = m_text.size();
    appendLine(m_text, indent(level + 1), "constant tabsize_"_L1, name, u":", kValueColumn, "integer := "_L1, count,
               u";");
    if (m_listener)
        commentOut(m_text, begin, m_listener->onConstant("tabsize_"_L1 + name, {count, array.count()}, array));
    begin = m_text.size();
    appendLine(m_text, indent(level + 1), "type tab_"_L1, name,
               " is array (NATURAL range <>) of std_logic_vector(range_"_L1, name, ");"_L1);
    if (m_listener)
        commentOut(m_text, begin, m_listener->onType("tab_"_L1 + name, "range_"_L1 + name, array));
    m_text += u'\n';
}

void MapWriter::writeKind(const VMValuable &valuable, int level)
{
    const bool isElement = valuable.arrayNumber != -1 && valuable.parent;
    const QString &name = isElement ? valuable.parent->getName() : valuable.getName();
    writeAddress(valuable, name.toUpper(), level);
    appendLine(m_text, indent(level + 1), "-- logical map"_L1);
    for (const auto &field : valuable.bitFields)
        writeLogical(*field, level);
    for (const auto &group : valuable.bitGroups)
        writeLogical(*group, level);
    beginLine();
    appendLine(m_text, indent(level + 1), "-- physical map"_L1);
    for (const auto &field : valuable.bitFields)
        writePhysical(*field, level);
    for (const auto &group : valuable.bitGroups)
        writePhysical(*group, level);
    DeclarationListener *listener = beginLine();
    const qsizetype begin = m_text.size();
    appendLine(m_text, indent(level + 1), "subtype range_"_L1, name, " is"_L1, kValueColumn, "integer range "_L1,
               valuable.physicalName, " downto 0;"_L1);
    if (listener) {
        const int top = valuable.bitFields.empty() ? 0 : valuable.bitFields.back()->physicalUpPos;
        commentOut(m_text, begin,
                   listener->onRange("range_"_L1 + name, {valuable.physicalName, top}, {u"0"_s, 0}, valuable));
    }
    m_text += u'\n';
}

/// Addresses count words.
void MapWriter::writeAddress(const VMXMLElement &element, const QString &name, int level)
{
    const unsigned int address = element.getBaseAddress() >> 2;
    const QString text = QString::number(address);
    const qsizetype begin = m_text.size();
    appendLine(m_text, indent(level), "constant at_"_L1, name, u":", kValueColumn, "integer := "_L1, text, u";");
    if (m_listener)
        commentOut(m_text, begin, m_listener->onConstant("at_"_L1 + name, {text, address}, element));
}

DeclarationListener *MapWriter::beginLine()
{
    return std::exchange(m_isBehindError, false) ? nullptr : m_listener;
}

void MapWriter::writeLogical(const VMBitField &field, int level)
{
    writeDefinition({kLogical,
                     field.getName(),
                     field.upPosExpression,
                     field.downPosExpression,
                     elementCast<VMValuable>(field.parent),
                     &field,
                     {field.upPos, field.downPos},
                     kNoRemark},
                    level);
}

void MapWriter::writePhysical(const VMBitField &field, int level)
{
    writeDefinition({kPhysical,
                     field.getName(),
                     field.physicalUpPosExpression,
                     field.physicalDownPosExpression,
                     elementCast<VMValuable>(field.parent),
                     &field,
                     {field.physicalUpPos, field.physicalDownPos},
                     kNoRemark},
                    level);
}

void MapWriter::writeLogical(const VMBitGroup &group, int level)
{
    writeDefinition({kLogical, group.name, group.getUpPosExpression(), group.getDownPosExpression(), group.valuable,
                     group.valuable, Span::of(group, &VMBitField::upPos, &VMBitField::downPos),
                     group.isContiguous() ? kNoRemark : kNotContiguous},
                    level);
}

void MapWriter::writePhysical(const VMBitGroup &group, int level)
{
    writeDefinition({kPhysical, group.name, group.getUpPosPhysicalExpression(), group.getDownPosPhysicalExpression(),
                     group.valuable, group.valuable,
                     Span::of(group, &VMBitField::physicalUpPos, &VMBitField::physicalDownPos),
                     group.isPhysicalContiguous() ? kNoRemark : kNotContiguous},
                    level);
}

Evaluated MapWriter::evaluate(const QString &expression, const VMXMLArchive &archive) const
{
    if (m_find)
        return evaluateExpression(expression, m_find);
    Evaluated result;
    result.value = archive.variables->evalExpression(expression, result.message, result.failed);
    return result;
}

/// One position is a constant, two are a subtype: by their numbers, not their texts. A position that does not evaluate
/// leaves the text of its error in the package.
void MapWriter::writeDefinition(const Definition &definition, int level)
{
    const VMXMLArchive *archive = definition.valuable ? definition.valuable->getTopArchive() : nullptr;
    if (!archive) {
        m_text += "ERROR : contact developper"_L1;
        return;
    }
    const QString high = vhdlExpression(definition.high);
    const QString low = vhdlExpression(definition.low);
    const Evaluated highNumber = evaluate(high, *archive);
    const Evaluated lowNumber = highNumber.failed ? highNumber : evaluate(low, *archive);
    DeclarationListener *listener = beginLine();
    if (lowNumber.failed) {
        const qsizetype begin = m_text.size();
        m_text += "ERROR while evaluating expressions when generating vhdl"_L1 + lowNumber.message;
        const QString reason = listener ? listener->onUnevaluated(definition.name, *definition.cause) : QString();
        m_isBehindError = reason.isEmpty();
        if (!m_isBehindError) {
            m_text += u'\n';
            commentOut(m_text, begin, reason);
        }
        return;
    }
    const bool isRange = highNumber.value != lowNumber.value;
    const QString line = isRange ? lineOf(definition.rangeRemark, "subtype  "_L1, definition.prefix, definition.name,
                                          " is"_L1, kValueColumn, "integer range "_L1, high, " downto "_L1, low, u";")
                                 : lineOf("constant "_L1, definition.prefix, definition.name, u":", kValueColumn,
                                          "integer := "_L1, high, u";");
    const bool isRepeated = m_known.contains(line);
    const qsizetype begin = m_text.size();
    m_text += (isRepeated ? "--"_L1 : ""_L1) + indent(level + 1) + line;
    if (isRepeated)
        return;
    m_known.insert(line);
    m_seen.append(line);
    const bool isComment = isRange && !definition.rangeRemark.isEmpty();
    if (!listener || isComment)
        return;
    const QString name = definition.prefix + definition.name;
    const PackageNumber top = {high, definition.span.high};
    commentOut(m_text, begin,
               isRange ? listener->onRange(name, top, {low, definition.span.low}, *definition.cause)
                       : listener->onConstant(name, top, *definition.cause));
}

} // namespace veldmap

namespace {

/// The text of one part of a module, written by \a write.
template <typename Write>
QString partOf(QStringList &seen, const Write &write)
{
    veldmap::MapWriter writer(seen);
    write(writer);
    return writer.takeText();
}

} // namespace

QString VMXMLElement::vhdl_serialize(int indent, QStringList &seen) const
{
    return partOf(seen, [&](veldmap::MapWriter &writer) { writer.write(*this, indent); });
}

QString VMBitField::vhdl_logical_serialize(int indent, QStringList &seen) const
{
    return partOf(seen, [&](veldmap::MapWriter &writer) { writer.writeLogical(*this, indent); });
}

QString VMBitField::vhdl_physical_serialize(int indent, QStringList &seen) const
{
    return partOf(seen, [&](veldmap::MapWriter &writer) { writer.writePhysical(*this, indent); });
}

QString VMBitGroup::vhdl_logical_serialize(int indent, QStringList &seen) const
{
    return partOf(seen, [&](veldmap::MapWriter &writer) { writer.writeLogical(*this, indent); });
}

QString VMBitGroup::vhdl_physical_serialize(int indent, QStringList &seen) const
{
    return partOf(seen, [&](veldmap::MapWriter &writer) { writer.writePhysical(*this, indent); });
}
