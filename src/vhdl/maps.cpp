#include "vhdl/maps.h"

#include "model/kinds.h"
#include "model/visit.h"
#include "text/lines.h"
#include "vhdl/notation.h"

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

/// What the line of a field or a group in one of the maps is made of.
struct MapWriter::Definition {
    QLatin1StringView prefix;
    QString name;
    QString high;
    QString low;
    const VMValuable *valuable;    ///< which holds the field or group
    const VMXMLElement *cause;     ///< what the description declares it by: the field, or the group's valuable
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
    appendLine(m_text, indent(level + 1), "constant tabsize_"_L1, name, u":", kValueColumn, "integer := "_L1, count,
               u";");
    appendLine(m_text, indent(level + 1), "type tab_"_L1, name,
               " is array (NATURAL range <>) of std_logic_vector(range_"_L1, name, ");"_L1);
    m_text += u'\n';
    if (m_listener) {
        m_listener->onConstant("tabsize_"_L1 + name, count, array);
        m_listener->onType("tab_"_L1 + name, "range_"_L1 + name, array);
    }
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
    appendLine(m_text, indent(level + 1), "subtype range_"_L1, name, " is"_L1, kValueColumn, "integer range "_L1,
               valuable.physicalName, " downto 0;"_L1);
    m_text += u'\n';
    if (listener)
        listener->onRange("range_"_L1 + name, valuable.physicalName, u"0"_s, valuable);
}

/// Addresses count words.
void MapWriter::writeAddress(const VMXMLElement &element, const QString &name, int level)
{
    const QString address = QString::number(element.getBaseAddress() >> 2);
    appendLine(m_text, indent(level), "constant at_"_L1, name, u":", kValueColumn, "integer := "_L1, address, u";");
    if (m_listener)
        m_listener->onConstant("at_"_L1 + name, address, element);
}

DeclarationListener *MapWriter::beginLine()
{
    return std::exchange(m_isBehindError, false) ? nullptr : m_listener;
}

void MapWriter::writeLogical(const VMBitField &field, int level)
{
    writeDefinition({kLogical, field.getName(), field.upPosExpression, field.downPosExpression,
                     elementCast<VMValuable>(field.parent), &field, kNoRemark},
                    level);
}

void MapWriter::writePhysical(const VMBitField &field, int level)
{
    writeDefinition({kPhysical, field.getName(), field.physicalUpPosExpression, field.physicalDownPosExpression,
                     elementCast<VMValuable>(field.parent), &field, kNoRemark},
                    level);
}

void MapWriter::writeLogical(const VMBitGroup &group, int level)
{
    writeDefinition({kLogical, group.name, group.getUpPosExpression(), group.getDownPosExpression(), group.valuable,
                     group.valuable, group.isContiguous() ? kNoRemark : kNotContiguous},
                    level);
}

void MapWriter::writePhysical(const VMBitGroup &group, int level)
{
    writeDefinition({kPhysical, group.name, group.getUpPosPhysicalExpression(), group.getDownPosPhysicalExpression(),
                     group.valuable, group.valuable, group.isPhysicalContiguous() ? kNoRemark : kNotContiguous},
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
        m_text += "ERROR while evaluating expressions when generating vhdl"_L1 + lowNumber.message;
        m_isBehindError = true;
        if (listener)
            listener->onUnevaluated(definition.name, *definition.cause);
        return;
    }
    const bool isRange = highNumber.value != lowNumber.value;
    const QString line = isRange ? lineOf(definition.rangeRemark, "subtype  "_L1, definition.prefix, definition.name,
                                          " is"_L1, kValueColumn, "integer range "_L1, high, " downto "_L1, low, u";")
                                 : lineOf("constant "_L1, definition.prefix, definition.name, u":", kValueColumn,
                                          "integer := "_L1, high, u";");
    const bool isRepeated = m_known.contains(line);
    m_text += (isRepeated ? "--"_L1 : ""_L1) + indent(level + 1) + line;
    if (isRepeated)
        return;
    m_known.insert(line);
    m_seen.append(line);
    const bool isComment = isRange && !definition.rangeRemark.isEmpty();
    if (!listener || isComment)
        return;
    if (isRange)
        listener->onRange(definition.prefix + definition.name, high, low, *definition.cause);
    else
        listener->onConstant(definition.prefix + definition.name, high, *definition.cause);
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
