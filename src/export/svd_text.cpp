#include "export/svd_text.h"

#include "export/comment_text.h"
#include "export/export_rules.h"
#include "export/exported_roots.h"
#include "export/nested_export.h"
#include "export/xml_text.h"
#include "model/archive.h"
#include "model/kinds.h"
#include "model/pointer.h"
#include "model/root_archive.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

// A peripheral of a chip. The schema demands this order.
//
//     <peripheral>
//       <name>UART0</name>
//       <description>Serial port</description>
//       <headerStructName>uart</headerStructName>
//       <baseAddress>0x40034000</baseAddress>
//       <addressBlock>
//         <offset>0</offset>
//         <size>0x14</size>
//         <usage>registers</usage>
//       </addressBlock>
//       <registers>
//         <register>
//           <dim>4</dim>
//           <dimIncrement>0x4</dimIncrement>
//           <name>chan[%s]</name>
//           <addressOffset>0x8</addressOffset>
//           <size>32</size>
//           <access>read-write</access>
//         </register>
//       </registers>
//     </peripheral>

namespace veldmap {

namespace {

constexpr QLatin1StringView kFormat = "SVD"_L1;

QLatin1StringView accessWord(const MapAccess &access)
{
    if (access.isReadable)
        return access.isWritable() ? "read-write"_L1 : "read-only"_L1;
    return "write-only"_L1;
}

/// A comment with line breaks as such files have them: "\\n", twice since one only ends a line of the source.
template <typename Commented>
QString descriptionOf(const Commented &commented)
{
    return plainCommentText(commented).replace(u'\n', "\\n\\n"_L1);
}

/// The fields of \a valuable in the order of a register whose fields all go up or all go down. Pieces of a cut field go
/// up always, which readers that put pieces together would take for a break.
std::vector<MapField> inOneDirection(std::vector<MapField> fields, const VMValuable &valuable)
{
    if (fields.empty() || fields.front().lowest <= fields.back().lowest)
        return fields;
    QHash<const VMBitField *, const VMBitGroup *> groups;
    for (const auto &group : valuable.bitGroups) {
        for (const VMBitField *field : *group)
            groups.insert(field, group.get());
    }
    std::vector<MapField> result;
    for (auto begin = fields.begin(); begin != fields.end();) {
        const VMBitGroup *const group = groups.value(&begin->field);
        auto end = begin + 1;
        while (group && end != fields.end() && groups.value(&end->field) == group && end->lowest > (end - 1)->lowest)
            ++end;
        std::reverse_copy(begin, end, std::back_inserter(result));
        begin = end;
    }
    return result;
}

/// The C type that a debugger shows \a valuable as; empty for a plain register.
QString dataTypeOf(const VMValuable &valuable)
{
    const auto typeOf = [](const ScalarKind &kind) {
        return QString(kind.isSigned ? "int"_L1 : "uint"_L1) + QString::number(kind.bits) + "_t"_L1;
    };
    if (const auto *pointer = elementCast<VMPointer>(static_cast<const VMXMLElement *>(&valuable))) {
        const ScalarKind *pointed = scalarKindNamed(pointer->pointedType, kPointedType);
        return pointed ? typeOf(*pointed) + " *"_L1 : u"uint32_t"_s;
    }
    const ScalarKind *kind = scalarKindOf(valuable.getType());
    const bool isRegister = !kind || kind->isBusRegister;
    return isRegister ? QString() : typeOf(*kind);
}

class SvdExport final : public NestedExport {
public:
    SvdExport(const VMMemoryMap &map, ExportFindings &findings) : NestedExport(kFormat, findings), m_map(map) {}

    QByteArray text();

    bool beginBlock(const MapPlace &block) override;
    void endBlock(const MapPlace &block) override;
    void takeMemory(const MapPlace &place) override;

protected:
    void openGroup(const MapPlace &group, const QString &name) override;
    void closeGroup() override { m_xml.close(); }
    void writeRegister(const MapPlace &place, const QString &name, const VMValuable &valuable, const MapAccess &access,
                       const std::vector<MapField> &fields) override;
    bool takesOtherBus() const override { return false; }
    void tellLossesOfType(const MapPlace &place, const VMValuable &valuable) override;

private:
    void writeDim(const MapPlace &place, const QString &name);
    void findInterrupts(const ExportedRoots &roots);
    const VMXMLElement *ownerOf(const VMIntVar &entry, const QHash<QString, const VMXMLElement *> &blocks,
                                const ExportedRoots &roots);
    void writeInterrupts(const VMXMLElement &block);
    void writeAddressBlocks(const MapPlace &block);
    void writeAddressBlock(quint32 offset, quint32 size, QLatin1StringView usage);
    void writeField(const MapField &field, const MapAccess &ofRegister, NameScope &names);
    void writeOptions(const MapField &field);
    void openRegisters();
    QString groupNameOf(const VMXMLElement &block);

    const VMMemoryMap &m_map;
    XmlText m_xml;
    EnumsOfFields m_enums;
    const ExportedRoots *m_roots = nullptr;
    QHash<TypeKey, QString> m_firstOfTypes;                            // the peripheral that is written of each type
    QHash<const VMXMLElement *, QString> m_names;                      // of blocks
    QHash<const VMXMLElement *, QList<const VMIntVar *>> m_interrupts; // of blocks
    bool m_areRegistersOpen = false;
};

QByteArray SvdExport::text()
{
    const BlockRules rules = {.sameAddresses = u"it is written as an alternate of it"_s};
    const ExportedRoots roots(m_map, kFormat, rules, findings());
    m_roots = &roots;
    for (const VMRootArchive *root : roots.roots()) {
        learn(*root);
        m_enums.take(*root);
    }
    m_xml.open("device"_L1, {{"schemaVersion"_L1, u"1.3"}});
    m_xml.leaf("name"_L1, roots.name());
    m_xml.leaf("version"_L1, "1.0"_L1);
    const QString description = descriptionOf(roots.description());
    m_xml.leaf("description"_L1, description.isEmpty() ? u" "_s : description); // it has to hold a character
    m_xml.leaf("addressUnitBits"_L1, 8);
    m_xml.leaf("width"_L1, 32);
    m_xml.leaf("size"_L1, 32);
    m_xml.leaf("access"_L1, "read-write"_L1);
    m_xml.leaf("resetValue"_L1, 0);
    m_xml.leaf("resetMask"_L1, 0);
    findInterrupts(roots);
    m_xml.open("peripherals"_L1);
    beginScope();
    for (const VMXMLElement *block : roots.blocks())
        walkBlock(*block, MapArrays::AsOne, *this, findings());
    endScope();
    m_xml.close();
    m_xml.close();
    return m_xml.takeText();
}

QString SvdExport::groupNameOf(const VMXMLElement &block)
{
    if (block.category.isEmpty() || block.category == "Unclassified"_L1)
        return {};
    const QString legal = legalName(block.category);
    if (legal != block.category)
        tell(rules::exportNameChanged, block.source, {block.category, kFormat, legal});
    return legal;
}

bool SvdExport::beginBlock(const MapPlace &block)
{
    const QString name = nameOf(block);
    const std::optional<TypeKey> type = typeOf(block.element);
    const QString first = type ? m_firstOfTypes.value(*type) : QString();
    m_names.insert(&block.element, name);
    if (first.isEmpty()) {
        m_xml.open("peripheral"_L1);
        if (type)
            m_firstOfTypes.insert(*type, name);
    } else {
        m_xml.open("peripheral"_L1, {{"derivedFrom"_L1, first}});
    }
    m_xml.leaf("name"_L1, name);
    if (first.isEmpty())
        m_xml.leafIfAny("description"_L1, descriptionOf(block.element.getComment()));
    if (const VMXMLElement *under = m_roots->blockUnder(block.element))
        m_xml.leaf("alternatePeripheral"_L1,
                   m_names.contains(under) ? m_names.value(under) : legalName(under->getName()));
    m_xml.leafIfAny("groupName"_L1, groupNameOf(block.element));
    if (first.isEmpty() && !block.element.typedefName.isEmpty())
        m_xml.leaf("headerStructName"_L1, legalName(block.element.typedefName));
    m_xml.hexLeaf("baseAddress"_L1, block.address);
    beginScope();
    if (first.isEmpty())
        writeAddressBlocks(block);
    writeInterrupts(block.element);
    return first.isEmpty();
}

void SvdExport::endBlock(const MapPlace &)
{
    if (m_areRegistersOpen)
        m_xml.close();
    m_areRegistersOpen = false;
    endScope();
    m_xml.close();
}

/// An enum called "interrupt" numbers the interrupts. Each belongs to the instance whose name its own begins with, the
/// longest of them, or else to the first.
void SvdExport::findInterrupts(const ExportedRoots &roots)
{
    QHash<QString, const VMXMLElement *> blocks;
    for (const VMXMLElement *block : roots.blocks())
        blocks.insert(block->getName().toUpper(), block);
    for (const VMRootArchive *root : roots.roots()) {
        for (const VMXMLArchive *archive : root->xmlArchives) {
            for (const auto &each : archive->variables->enums) {
                if (each->name.compare("interrupt"_L1, Qt::CaseInsensitive) != 0 || roots.blocks().empty())
                    continue;
                for (const VMIntVar &entry : *each)
                    m_interrupts[ownerOf(entry, blocks, roots)].append(&entry);
            }
        }
    }
}

const VMXMLElement *SvdExport::ownerOf(const VMIntVar &entry, const QHash<QString, const VMXMLElement *> &blocks,
                                       const ExportedRoots &roots)
{
    QString name = entry.name.toUpper();
    for (qsizetype end = name.size(); end > 0; end = name.lastIndexOf(u'_')) {
        name.truncate(end);
        if (const VMXMLElement *block = blocks.value(name))
            return block;
    }
    tell(rules::exportInterrupt, entry.source, {entry.name, kFormat, roots.blocks().front()->getName()});
    return roots.blocks().front();
}

void SvdExport::writeInterrupts(const VMXMLElement &block)
{
    for (const VMIntVar *entry : m_interrupts.value(&block)) {
        m_xml.open("interrupt"_L1);
        m_xml.leaf("name"_L1, entry->name);
        m_xml.leafIfAny("description"_L1, descriptionOf(entry->comment));
        m_xml.leaf("value"_L1, entry->leftValue);
        m_xml.close();
    }
}

/// Writes where the registers and the memories of a block lie: each run of members that are of one kind.
void SvdExport::writeAddressBlocks(const MapPlace &block)
{
    const auto *structure = elementCast<VMStruct>(&block.element);
    quint32 begin = 0;
    const auto writeRegistersUpTo = [&](quint32 end) {
        if (end > begin)
            writeAddressBlock(begin, end - begin, "registers"_L1);
    };
    if (structure) {
        for (const auto &member : structure->memberList) {
            const auto size = static_cast<quint32>(member->sizeOf());
            if (member->getType() != VMXMLElement::XML_MEMORY || size == 0)
                continue;
            writeRegistersUpTo(member->offset);
            writeAddressBlock(member->offset, size, "buffer"_L1);
            begin = member->offset + size;
        }
    }
    writeRegistersUpTo(block.size);
}

void SvdExport::writeAddressBlock(quint32 offset, quint32 size, QLatin1StringView usage)
{
    m_xml.open("addressBlock"_L1);
    m_xml.hexLeaf("offset"_L1, offset);
    m_xml.hexLeaf("size"_L1, size);
    m_xml.leaf("usage"_L1, usage);
    m_xml.close();
}

void SvdExport::openRegisters()
{
    if (!m_areRegistersOpen)
        m_xml.open("registers"_L1);
    m_areRegistersOpen = true;
}

void SvdExport::takeMemory(const MapPlace &place)
{
    const bool hasAddressBlock = !isInGroup() && !place.count && place.size > 0;
    tell(hasAddressBlock ? rules::exportMemoryName : rules::exportMemoryInside, place.declared.source,
         {place.name, kFormat});
}

void SvdExport::writeDim(const MapPlace &place, const QString &name)
{
    if (place.count) {
        m_xml.leaf("dim"_L1, *place.count);
        m_xml.hexLeaf("dimIncrement"_L1, place.size);
    }
    m_xml.leaf("name"_L1, place.count ? QString(name + "[%s]"_L1) : name);
}

void SvdExport::openGroup(const MapPlace &group, const QString &name)
{
    openRegisters();
    m_xml.open("cluster"_L1);
    writeDim(group, name);
    m_xml.leaf("description"_L1, descriptionOf(commentOf(group))); // which a cluster must have, be it empty
    if (!group.element.typedefName.isEmpty())
        m_xml.leaf("headerStructName"_L1, legalName(group.element.typedefName));
    m_xml.hexLeaf("addressOffset"_L1, group.offset);
}

void SvdExport::tellLossesOfType(const MapPlace &place, const VMValuable &valuable)
{
    const auto *pointer = elementCast<VMPointer>(static_cast<const VMXMLElement *>(&valuable));
    if (pointer && !scalarKindNamed(pointer->pointedType, kPointedType))
        tell(rules::exportPointer, place.declared.source, {kFormat, place.name, pointer->pointedType});
}

void SvdExport::writeRegister(const MapPlace &place, const QString &name, const VMValuable &valuable,
                              const MapAccess &access, const std::vector<MapField> &fields)
{
    openRegisters();
    m_xml.open("register"_L1);
    writeDim(place, name);
    m_xml.leafIfAny("description"_L1, descriptionOf(commentOf(place)));
    m_xml.hexLeaf("addressOffset"_L1, place.offset);
    m_xml.leaf("size"_L1, bitsOf(valuable));
    m_xml.leaf("access"_L1, accessWord(access));
    if (const MapReset reset = resetOf(fields); reset.mask != 0) {
        m_xml.hexLeaf("resetValue"_L1, reset.value);
        m_xml.hexLeaf("resetMask"_L1, reset.mask);
    }
    m_xml.leafIfAny("dataType"_L1, dataTypeOf(valuable));
    NameScope names = newScope();
    bool isOpen = false;
    for (const MapField &field : inOneDirection(fields, valuable)) {
        const MapAccess own = accessOf(field.field);
        if (!own.isReadable && !own.isWritable()) {
            tell(rules::exportNoAccess, field.field.source, {kFormat, field.field.getName()});
            continue;
        }
        if (!std::exchange(isOpen, true))
            m_xml.open("fields"_L1);
        writeField(field, access, names);
    }
    if (isOpen)
        m_xml.close();
    m_xml.close();
}

void SvdExport::writeField(const MapField &field, const MapAccess &ofRegister, NameScope &names)
{
    const MapAccess access = accessOf(field.field);
    m_xml.open("field"_L1);
    m_xml.leaf("name"_L1, names.take(field.field.getName(), field.field.source));
    m_xml.leafIfAny("description"_L1, descriptionOf(field.field));
    m_xml.leaf("bitOffset"_L1, field.lowest);
    m_xml.leaf("bitWidth"_L1, field.width);
    if (accessWord(access) != accessWord(ofRegister))
        m_xml.leaf("access"_L1, accessWord(access));
    if (access.writeMode > 1)
        m_xml.leaf("modifiedWriteValues"_L1, access.writeMode == 2 ? "oneToSet"_L1 : "oneToClear"_L1);
    if (!field.options.empty())
        writeOptions(field);
    m_xml.close();
}

void SvdExport::writeOptions(const MapField &field)
{
    m_xml.open("enumeratedValues"_L1);
    if (const VMEnum *named = m_enums.of(field.field))
        m_xml.leaf("name"_L1, legalName(named->name));
    NameScope names = newScope();
    for (const MapOption &option : field.options) {
        m_xml.open("enumeratedValue"_L1);
        m_xml.leaf("name"_L1, names.take(option.option.name, option.option.source, true));
        m_xml.leafIfAny("description"_L1, descriptionOf(option.option.comment));
        m_xml.leaf("value"_L1, qint64(option.value));
        m_xml.close();
    }
    m_xml.close();
}

} // namespace

QByteArray svdText(const VMMemoryMap &map, ExportFindings &findings)
{
    return SvdExport(map, findings).text();
}

} // namespace veldmap
