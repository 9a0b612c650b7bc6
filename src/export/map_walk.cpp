#include "export/map_walk.h"

#include "export/export_rules.h"
#include "model/archive.h"
#include "model/kinds.h"
#include "model/root_archive.h"
#include "model/visit.h"
#include "text/bit_arithmetic.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Walks a block. Addresses are added up on the way down, since an element would look for its own up to the root.
class MapWalk {
public:
    MapWalk(MapArrays arrays, MapListener &listener, ExportFindings &findings)
        : m_arrays(arrays), m_listener(listener), m_findings(findings)
    {
    }

    void walkBlock(const VMXMLElement &block);

private:
    void walkMember(const VMXMLElement &member, quint32 parentAddress);
    void walkArray(const VMArray &array, const QString &name, quint32 parentAddress);
    void walkPlace(const MapPlace &place);
    void walkInside(const VMXMLElement &element, const MapPlace &place);

    MapArrays m_arrays;
    MapListener &m_listener;
    ExportFindings &m_findings;
};

void MapWalk::walkBlock(const VMXMLElement &block)
{
    const bool isInstance = block.isInstance();
    const MapPlace place = {.element = block,
                            .declared = block,
                            .name = isInstance ? block.getName() : block.typedefName,
                            .address = isInstance ? block.offset : 0,
                            .size = static_cast<quint32>(block.sizeOf())};
    if (m_listener.beginBlock(place)) {
        if (const auto *structure = elementCast<VMStruct>(&block)) {
            for (const auto &member : structure->memberList)
                walkMember(*member, place.address);
        } else {
            // A register or a memory that is placed by itself is all that its block holds.
            if (const auto *array = elementCast<VMArray>(&block))
                walkArray(*array, place.name, place.address);
            else
                walkPlace(place);
        }
    }
    m_listener.endBlock(place);
}

void MapWalk::walkMember(const VMXMLElement &member, quint32 parentAddress)
{
    if (const auto *array = elementCast<VMArray>(&member)) {
        walkArray(*array, array->getName(), parentAddress);
        return;
    }
    walkPlace({.element = member,
               .declared = member,
               .name = member.getName(),
               .address = parentAddress + member.offset,
               .offset = member.offset,
               .size = static_cast<quint32>(member.sizeOf())});
}

void MapWalk::walkArray(const VMArray &array, const QString &name, quint32 parentAddress)
{
    if (array.memberList.empty()) {
        m_findings.add(rules::exportEmptyArray, array.source, {name});
        return;
    }
    const quint32 offset = array.isInstance() ? 0 : array.offset;
    const bool isNested = elementCast<VMArray>(static_cast<const VMXMLElement *>(array.memberList.front().get()));
    const auto placeOf = [&](const VMXMLElement &member, const QString &memberName) {
        return MapPlace{.element = member,
                        .declared = array,
                        .name = memberName,
                        .address = parentAddress + offset + member.offset,
                        .offset = offset + member.offset,
                        .size = static_cast<quint32>(member.sizeOf())};
    };
    if (m_arrays == MapArrays::AsOne && !isNested) {
        MapPlace place = placeOf(*array.memberList.front(), name);
        place.count = array.count();
        walkPlace(place);
        return;
    }
    int index = 0;
    for (const auto &member : array.memberList) {
        const QString memberName = name + u'[' + QString::number(index++) + u']';
        if (const auto *inner = elementCast<VMArray>(static_cast<const VMXMLElement *>(member.get())))
            walkArray(*inner, memberName, parentAddress + offset);
        else
            walkPlace(placeOf(*member, memberName));
    }
}

void MapWalk::walkPlace(const MapPlace &place)
{
    visit(place.element,
          Overloads{
              [&](const VMStruct &group) {
                  if (m_listener.beginGroup(place)) {
                      for (const auto &member : group.memberList)
                          walkMember(*member, place.address);
                  }
                  m_listener.endGroup(place);
              },
              [&](const VMValuable &valuable) { m_listener.takeRegister(place, valuable); },
              [&](const VMMemory &) { m_listener.takeMemory(place); }, [](const VMXMLElement &) {}, // gaps
          });
}

/// The bits of \a value that a field of \a width has, if the others only repeat a sign or are not there.
std::optional<quint32> fittedInto(int width, qint64 value)
{
    const quint32 bits = static_cast<quint32>(value) & lowBits(width);
    const qint64 lowest = -(qint64(1) << (width - 1));
    const bool fits = value < 0 ? value >= lowest : quint64(value) <= lowBits(width);
    return fits ? std::optional(bits) : std::nullopt;
}

std::vector<MapOption> optionsOf(const VMBitField &field, int width, ExportFindings &findings)
{
    std::vector<MapOption> options;
    for (const VMBitFieldOption &option : field.options.optionList) {
        // A value of 32 bits is written as a negative number as well.
        const qint64 value = width == 32 ? qint64(static_cast<quint32>(option.value)) : option.value;
        if (const std::optional<quint32> fitted = fittedInto(width, value))
            options.push_back({option, *fitted});
        else
            findings.add(rules::exportOptionOutside, option.source, {QString::number(option.value), option.name});
    }
    return options;
}

std::optional<quint32> resetOf(const VMBitField &field, int width)
{
    return field.hasReset ? std::optional(field.resetValue & lowBits(width)) : std::nullopt;
}

void collectModules(const VMRootArchive &root, std::vector<const VMXMLElement *> &blocks)
{
    for (const VMXMLArchive *archive : root.xmlArchives) {
        for (const auto &element : archive->templates) {
            const auto *module = elementCast<VMStruct>(static_cast<const VMXMLElement *>(element.get()));
            if (module && module->isTypedef == 0)
                blocks.push_back(module);
        }
    }
}

QString keyOf(const QString &name, const SourcePlace &place)
{
    return name + u'\n' + place.file.name() + u'\n' + QString::number(place.line) + u':' +
           QString::number(place.column);
}

} // namespace

std::vector<const VMXMLElement *> blocksOf(const VMRootArchive &root, ExportFindings &findings)
{
    std::vector<const VMXMLElement *> blocks;
    for (const auto &instance : root.instances)
        blocks.push_back(instance.get());
    if (!blocks.empty())
        return blocks;
    collectModules(root, blocks);
    const SourcePlace place = root.xmlArchives.isEmpty() ? SourcePlace() : root.xmlArchives.first()->source;
    findings.add(blocks.empty() ? rules::exportNothing : rules::exportWithoutInstances, place, {root.getName()});
    return blocks;
}

void walkBlock(const VMXMLElement &block, MapArrays arrays, MapListener &listener, ExportFindings &findings)
{
    MapWalk(arrays, listener, findings).walkBlock(block);
}

const QString &commentOf(const MapPlace &place)
{
    const QString &ofArray = place.declared.getComment();
    return ofArray.isEmpty() ? place.element.getComment() : ofArray;
}

int bitsOf(const VMValuable &valuable)
{
    return 8 * valuable.sizeOf();
}

std::vector<MapField> fieldsOf(const VMValuable &valuable, ExportFindings &findings)
{
    const int bits = bitsOf(valuable);
    std::vector<MapField> fields;
    fields.reserve(valuable.bitFields.size());
    for (const auto &field : valuable.bitFields) {
        const int lowest = qMax(field->downPos, 0);
        const int highest = qMin(field->upPos, bits - 1);
        if (highest < lowest) {
            findings.add(rules::exportFieldOutside, field->source, {field->getName()});
            continue;
        }
        if (lowest != field->downPos || highest != field->upPos)
            findings.add(rules::exportFieldCut, field->source, {field->getName()});
        const int width = highest - lowest + 1;
        fields.push_back({*field, lowest, width, bitRange(highest, lowest), resetOf(*field, width),
                          optionsOf(*field, width, findings)});
    }
    return fields;
}

MapReset resetOf(const std::vector<MapField> &fields)
{
    MapReset reset;
    for (const MapField &field : fields) {
        if (!field.reset)
            continue;
        reset.value = (reset.value & ~field.mask) | (*field.reset << field.lowest);
        reset.mask |= field.mask;
    }
    return reset;
}

MapAccess accessOf(const VMValuable &valuable)
{
    return {valuable.readable, valuable.writable ? 1 : 0};
}

MapAccess accessOf(const VMBitField &field)
{
    return {field.readable, field.writeMode};
}

void HalfNames::take(const VMRootArchive &root)
{
    for (const VMXMLArchive *archive : root.xmlArchives) {
        for (const auto &element : archive->templates)
            takeBelow(*element);
    }
}

void HalfNames::takeBelow(const VMXMLElement &element)
{
    visit(element, Overloads{
                       [&](const VMStruct &structure) {
                           for (const auto &member : structure.memberList)
                               takeBelow(*member);
                       },
                       [&](const VMArray &array) { takeBelow(*array.prototype); },
                       [&](const VMValuable &valuable) {
                           if (!valuable.lowName.isEmpty() || !valuable.highName.isEmpty())
                               m_names.insert(keyOf(QString(), valuable.source), {valuable.lowName, valuable.highName});
                       },
                       [](const VMXMLElement &) {},
                   });
}

HalfNames::Names HalfNames::of(const VMValuable &valuable) const
{
    return m_names.isEmpty() ? Names() : m_names.value(keyOf(QString(), valuable.source));
}

void EnumsOfFields::take(const VMRootArchive &root)
{
    for (const VMXMLArchive *archive : root.xmlArchives) {
        for (const auto &each : archive->variables->enums) {
            for (const VMIntVar &entry : *each)
                m_owners.insert(keyOf(entry.name, entry.source), each.get());
        }
    }
}

const VMEnum *EnumsOfFields::of(const VMBitField &field) const
{
    const QList<VMBitFieldOption> &options = field.options.optionList;
    return options.isEmpty() ? nullptr : m_owners.value(keyOf(options.first().name, options.first().source));
}

} // namespace veldmap
