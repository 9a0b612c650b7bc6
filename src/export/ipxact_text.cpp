#include "export/ipxact_text.h"

#include "export/comment_text.h"
#include "export/export_rules.h"
#include "export/exported_roots.h"
#include "export/nested_export.h"
#include "export/xml_text.h"
#include "text/lines.h"

using namespace Qt::StringLiterals;

// An address block. The standard demands this order, and a field in each register.
//
//     <ipxact:addressBlock>
//       <ipxact:name>UART0</ipxact:name>
//       <ipxact:baseAddress>'h40034000</ipxact:baseAddress>
//       <ipxact:typeIdentifier>uart</ipxact:typeIdentifier>
//       <ipxact:range>'h14</ipxact:range>
//       <ipxact:width>32</ipxact:width>
//       <ipxact:usage>register</ipxact:usage>
//       <ipxact:register>
//         <ipxact:name>chan</ipxact:name>
//         <ipxact:dim>4</ipxact:dim>
//         <ipxact:addressOffset>'h8</ipxact:addressOffset>
//         <ipxact:size>32</ipxact:size>
//         <ipxact:access>read-write</ipxact:access>
//         <ipxact:field>
//           ...

namespace veldmap {

namespace {

constexpr QLatin1StringView kFormat = "IP-XACT"_L1;
constexpr QLatin1StringView kWholeField = "value"_L1;

QLatin1StringView accessWord(const MapAccess &access)
{
    if (access.isReadable)
        return access.isWritable() ? "read-write"_L1 : "read-only"_L1;
    return "write-only"_L1;
}

/// A comment with its line breaks as empty lines, since single ones only fold long lines of a file.
template <typename Commented>
QString descriptionOf(const Commented &commented)
{
    return plainCommentText(commented).replace(u'\n', "\n\n"_L1);
}

/// \a number as SystemVerilog writes it, which IP-XACT's expressions are.
QString hex(quint32 number)
{
    return "'h"_L1 + hexDigits(number);
}

/// The memory that is all of \a block, null if it holds something else.
const VMXMLElement *onlyMemoryOf(const VMXMLElement &block)
{
    const auto *structure = elementCast<VMStruct>(&block);
    const VMXMLElement *only =
        structure && structure->memberList.size() == 1 ? structure->memberList[0].get() : nullptr;
    return only && only->getType() == VMXMLElement::XML_MEMORY ? only : nullptr;
}

class IpxactExport final : public NestedExport {
public:
    IpxactExport(const VMMemoryMap &map, ExportFindings &findings) : NestedExport(kFormat, findings), m_map(map) {}

    QByteArray text();

    bool beginBlock(const MapPlace &block) override;
    void endBlock(const MapPlace &block) override;
    void takeMemory(const MapPlace &place) override;

protected:
    void openGroup(const MapPlace &group, const QString &name) override;
    void closeGroup() override { m_xml.close(); }
    void writeRegister(const MapPlace &place, const QString &name, const VMValuable &valuable, const MapAccess &access,
                       const std::vector<MapField> &fields) override;

private:
    void writeName(const QString &name, const QString &comment);
    void writeType(const VMXMLElement &element);
    void writeField(const MapField &field, const MapAccess &ofRegister, NameScope &names);
    void writeWholeField(int bits);
    void writeOptions(const MapField &field);

    const VMMemoryMap &m_map;
    XmlText m_xml{"ipxact:"_L1};
    const VMXMLElement *m_memory = nullptr; // that is all of the block at hand
};

QByteArray IpxactExport::text()
{
    const BlockRules rules = {.sameAddresses = u"it is written, but readers may refuse it"_s};
    const ExportedRoots roots(m_map, kFormat, rules, findings());
    for (const VMRootArchive *root : roots.roots())
        learn(*root);
    m_xml.open("component"_L1,
               {{"xmlns:ipxact"_L1, u"http://www.accellera.org/XMLSchema/IPXACT/1685-2014"},
                {"xmlns:xsi"_L1, u"http://www.w3.org/2001/XMLSchema-instance"},
                {"xsi:schemaLocation"_L1, u"http://www.accellera.org/XMLSchema/IPXACT/1685-2014 "
                                          "http://www.accellera.org/XMLSchema/IPXACT/1685-2014/index.xsd"}});
    m_xml.leaf("vendor"_L1, "veldmap"_L1);
    m_xml.leaf("library"_L1, "registers"_L1);
    m_xml.leaf("name"_L1, roots.name());
    m_xml.leaf("version"_L1, "1.0"_L1);
    m_xml.open("memoryMaps"_L1);
    m_xml.open("memoryMap"_L1);
    m_xml.leaf("name"_L1, roots.name());
    beginScope();
    for (const VMXMLElement *block : roots.blocks())
        walkBlock(*block, MapArrays::AsOne, *this, findings());
    endScope();
    m_xml.leaf("addressUnitBits"_L1, 8);
    m_xml.close();
    m_xml.close();
    m_xml.leafIfAny("description"_L1, descriptionOf(roots.description()));
    m_xml.close();
    return m_xml.takeText();
}

void IpxactExport::writeName(const QString &name, const QString &comment)
{
    m_xml.leaf("name"_L1, name);
    m_xml.leafIfAny("description"_L1, comment);
}

void IpxactExport::writeType(const VMXMLElement &element)
{
    if (!element.typedefName.isEmpty())
        m_xml.leaf("typeIdentifier"_L1, legalName(element.typedefName));
}

bool IpxactExport::beginBlock(const MapPlace &block)
{
    m_memory = onlyMemoryOf(block.element);
    m_xml.open("addressBlock"_L1);
    writeName(nameOf(block), descriptionOf(block.element.getComment()));
    m_xml.leaf("baseAddress"_L1, hex(block.address));
    writeType(block.element);
    m_xml.leaf("range"_L1, hex(block.size));
    m_xml.leaf("width"_L1, m_memory ? 8 : 32);
    m_xml.leaf("usage"_L1, m_memory ? "memory"_L1 : "register"_L1);
    if (m_memory)
        m_xml.leaf("access"_L1, "read-write"_L1);
    beginScope();
    return true;
}

void IpxactExport::endBlock(const MapPlace &)
{
    endScope();
    m_xml.close();
}

void IpxactExport::takeMemory(const MapPlace &place)
{
    tell(m_memory ? rules::exportMemoryName : rules::exportMemoryInside, place.declared.source, {place.name, kFormat});
}

void IpxactExport::openGroup(const MapPlace &group, const QString &name)
{
    m_xml.open("registerFile"_L1);
    writeName(name, descriptionOf(commentOf(group)));
    if (group.count)
        m_xml.leaf("dim"_L1, *group.count);
    m_xml.leaf("addressOffset"_L1, hex(group.offset));
    writeType(group.element);
    m_xml.leaf("range"_L1, hex(group.size));
}

void IpxactExport::writeRegister(const MapPlace &place, const QString &name, const VMValuable &valuable,
                                 const MapAccess &access, const std::vector<MapField> &fields)
{
    m_xml.open("register"_L1);
    writeName(name, descriptionOf(commentOf(place)));
    if (place.count)
        m_xml.leaf("dim"_L1, *place.count);
    m_xml.leaf("addressOffset"_L1, hex(place.offset));
    m_xml.leaf("size"_L1, bitsOf(valuable));
    m_xml.leaf("access"_L1, accessWord(access));
    NameScope names = newScope();
    bool isAny = false;
    for (const MapField &field : withoutOverlaps(fields, kFormat, findings())) {
        const MapAccess own = accessOf(field.field);
        if (own.isReadable || own.isWritable()) {
            writeField(field, access, names);
            isAny = true;
        } else {
            tell(rules::exportNoAccess, field.field.source, {kFormat, field.field.getName()});
        }
    }
    if (!isAny) {
        tell(rules::exportWholeField, place.declared.source, {place.name, kFormat, kWholeField});
        writeWholeField(bitsOf(valuable));
    }
    m_xml.close();
}

void IpxactExport::writeWholeField(int bits)
{
    m_xml.open("field"_L1);
    m_xml.leaf("name"_L1, kWholeField);
    m_xml.leaf("bitOffset"_L1, 0);
    m_xml.leaf("bitWidth"_L1, bits);
    m_xml.open("vendorExtensions"_L1);
    m_xml.rawLine("<veldmap:wholeRegister xmlns:veldmap=\"urn:veldmap:ipxact\"/>"_L1); // the description has no field
    m_xml.close();
    m_xml.close();
}

void IpxactExport::writeField(const MapField &field, const MapAccess &ofRegister, NameScope &names)
{
    const MapAccess access = accessOf(field.field);
    m_xml.open("field"_L1);
    writeName(names.take(field.field.getName(), field.field.source), descriptionOf(field.field));
    m_xml.leaf("bitOffset"_L1, field.lowest);
    if (field.reset) {
        m_xml.open("resets"_L1);
        m_xml.open("reset"_L1);
        m_xml.leaf("value"_L1, hex(*field.reset));
        m_xml.close();
        m_xml.close();
    }
    m_xml.leaf("bitWidth"_L1, field.width);
    if (accessWord(access) != accessWord(ofRegister))
        m_xml.leaf("access"_L1, accessWord(access));
    if (!field.options.empty())
        writeOptions(field);
    if (access.writeMode > 1)
        m_xml.leaf("modifiedWriteValue"_L1, access.writeMode == 2 ? "oneToSet"_L1 : "oneToClear"_L1);
    m_xml.close();
}

void IpxactExport::writeOptions(const MapField &field)
{
    m_xml.open("enumeratedValues"_L1);
    NameScope names = newScope();
    for (const MapOption &option : field.options) {
        m_xml.open("enumeratedValue"_L1);
        writeName(names.take(option.option.name, option.option.source), descriptionOf(option.option.comment));
        m_xml.leaf("value"_L1, hex(option.value));
        m_xml.close();
    }
    m_xml.close();
}

} // namespace

QByteArray ipxactText(const VMMemoryMap &map, ExportFindings &findings)
{
    return IpxactExport(map, findings).text();
}

} // namespace veldmap
