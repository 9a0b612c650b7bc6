#include "export/map_json.h"

#include "export/comment_text.h"
#include "export/exported_roots.h"
#include "export/json_text.h"
#include "export/map_walk.h"
#include "model/archive.h"
#include "model/kinds.h"
#include "model/memory_map.h"
#include "model/pointer.h"
#include "model/root_archive.h"

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr QLatin1StringView kFormat = "JSON"_L1;

class JsonExport final : public MapListener {
public:
    JsonExport(const VMMemoryMap &map, ExportFindings &findings) : m_map(map), m_findings(findings) {}

    QByteArray text();

    bool beginBlock(const MapPlace &block) override;
    void endBlock(const MapPlace &block) override;
    bool beginGroup(const MapPlace &) override { return true; }
    void endGroup(const MapPlace &) override {}
    void takeRegister(const MapPlace &place, const VMValuable &valuable) override;
    void takeMemory(const MapPlace &place) override;

private:
    void writePlace(const MapPlace &place, JsonText &json) const;
    void writeField(const MapField &field);
    void writeGroups(const VMValuable &valuable);

    const VMMemoryMap &m_map;
    ExportFindings &m_findings;
    EnumsOfFields m_enums;
    HalfNames m_halves;
    JsonText m_json;
    JsonText m_memories; // of the block at hand
    quint32 m_blockAddress = 0;
};

QByteArray JsonExport::text()
{
    const ExportedRoots roots(m_map, kFormat, {.needsRoom = false}, m_findings);
    for (const VMRootArchive *root : roots.roots()) {
        m_halves.take(*root);
        m_enums.take(*root);
    }
    m_json.open('{');
    m_json.key("format"_L1).text(u"veldmap-map");
    m_json.key("version"_L1).number(kMapJsonVersion);
    m_json.key("name"_L1).text(roots.roots().empty() ? QString() : roots.roots().front()->getName());
    m_json.key("comment"_L1).text(roots.comment());
    m_json.key("blocks"_L1).open('[');
    for (const VMXMLElement *block : roots.blocks()) {
        m_json.breakLine();
        walkBlock(*block, MapArrays::EachMember, *this, m_findings);
    }
    m_json.close(']');
    m_json.close('}');
    return m_json.takeText() + '\n';
}

bool JsonExport::beginBlock(const MapPlace &block)
{
    m_blockAddress = block.address;
    const bool isChip = block.element.getRootArchive() == m_map.chipRootArchive;
    m_json.open('{');
    m_json.key("name"_L1).text(block.name);
    m_json.key("path"_L1).text(block.element.getPath());
    m_json.key("root"_L1).text(isChip ? u"chip" : u"soft");
    m_json.key("type"_L1).textOrNull(block.element.typedefName);
    m_json.key("category"_L1).textOrNull(block.element.category);
    m_json.key("comment"_L1).text(plainCommentText(block.element.getComment()));
    m_json.key("address"_L1).number(block.address);
    m_json.key("size"_L1).number(block.size);
    m_json.key("registers"_L1).open('[');
    m_memories = JsonText();
    m_memories.open('[');
    return true;
}

void JsonExport::endBlock(const MapPlace &)
{
    m_json.close(']');
    m_memories.close(']');
    m_json.key("memories"_L1).raw(m_memories.takeText());
    m_json.close('}');
}

void JsonExport::writePlace(const MapPlace &place, JsonText &json) const
{
    json.key("name"_L1).text(place.name);
    json.key("path"_L1).text(place.element.getPath());
    json.key("address"_L1).number(place.address);
    json.key("offset"_L1).number(place.address - m_blockAddress);
    json.key("comment"_L1).text(plainCommentText(commentOf(place)));
}

void JsonExport::writeField(const MapField &field)
{
    m_json.open('{');
    m_json.key("name"_L1).text(field.field.getName());
    m_json.key("lsb"_L1).number(field.lowest);
    m_json.key("msb"_L1).number(field.highest());
    m_json.key("width"_L1).number(field.width);
    m_json.key("mask"_L1).number(field.mask);
    m_json.key("access"_L1).text(field.field.getAccessString());
    if (field.reset)
        m_json.key("reset"_L1).number(*field.reset);
    else
        m_json.key("reset"_L1).null();
    const VMEnum *named = m_enums.of(field.field);
    m_json.key("enum"_L1).textOrNull(named ? named->name : QString());
    m_json.key("comment"_L1).text(plainCommentText(field.field));
    m_json.key("options"_L1).open('[');
    for (const MapOption &option : field.options) {
        m_json.open('{');
        m_json.key("name"_L1).text(option.option.name);
        m_json.key("value"_L1).number(option.value);
        m_json.key("comment"_L1).text(plainCommentText(option.option.comment));
        m_json.close('}');
    }
    m_json.close(']');
    m_json.close('}');
}

void JsonExport::writeGroups(const VMValuable &valuable)
{
    m_json.key("groups"_L1).open('[');
    for (const auto &group : valuable.bitGroups) {
        m_json.open('{');
        m_json.key("name"_L1).text(group->name);
        m_json.key("fields"_L1).open('[');
        for (const VMBitField *field : *group)
            m_json.text(field->getName());
        m_json.close(']');
        m_json.close('}');
    }
    m_json.close(']');
}

void JsonExport::takeRegister(const MapPlace &place, const VMValuable &valuable)
{
    const std::vector<MapField> fields = fieldsOf(valuable, m_findings);
    const MapReset reset = resetOf(fields);
    const HalfNames::Names halves = m_halves.of(valuable);
    const auto *pointer = elementCast<VMPointer>(static_cast<const VMXMLElement *>(&valuable));
    m_json.breakLine();
    m_json.open('{');
    writePlace(place, m_json);
    m_json.key("kind"_L1).text(QString(kindWordOf(valuable.getType())));
    m_json.key("type"_L1).text(valuable.getTypeString());
    m_json.key("width"_L1).number(bitsOf(valuable));
    m_json.key("access"_L1).text(valuable.getProtectString());
    m_json.key("reset"_L1).number(reset.value);
    m_json.key("resetMask"_L1).number(reset.mask);
    m_json.key("lowHalf"_L1).textOrNull(halves.low);
    m_json.key("highHalf"_L1).textOrNull(halves.high);
    m_json.key("pointsTo"_L1).textOrNull(pointer ? pointer->pointedType : QString());
    writeGroups(valuable);
    m_json.key("fields"_L1).open('[');
    for (const MapField &field : fields)
        writeField(field);
    m_json.close(']');
    m_json.close('}');
}

void JsonExport::takeMemory(const MapPlace &place)
{
    m_memories.open('{');
    writePlace(place, m_memories);
    m_memories.key("size"_L1).number(place.size);
    m_memories.close('}');
}

} // namespace

QByteArray mapJson(const VMMemoryMap &map, ExportFindings &findings)
{
    return JsonExport(map, findings).text();
}

} // namespace veldmap
