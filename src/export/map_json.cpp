#include "export/map_json.h"

#include "export/comment_text.h"
#include "export/exported_roots.h"
#include "export/map_walk.h"
#include "model/archive.h"
#include "model/kinds.h"
#include "model/memory_map.h"
#include "model/pointer.h"
#include "model/root_archive.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr QLatin1StringView kFormat = "JSON"_L1;

QJsonValue number(quint32 value)
{
    return static_cast<qint64>(value);
}

QJsonValue textOrNull(const QString &text)
{
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

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
    QJsonObject placeJson(const MapPlace &place) const;
    QJsonObject fieldJson(const MapField &field) const;

    const VMMemoryMap &m_map;
    ExportFindings &m_findings;
    EnumsOfFields m_enums;
    HalfNames m_halves;
    QByteArray m_text;
    QByteArray m_separator;       // in front of the next register
    QList<QByteArray> m_memories; // of the block at hand
    quint32 m_blockAddress = 0;
};

QByteArray JsonExport::text()
{
    const ExportedRoots roots(m_map, kFormat, {.needsRoom = false}, m_findings);
    for (const VMRootArchive *root : roots.roots()) {
        m_halves.take(*root);
        m_enums.take(*root);
    }
    const QByteArray head = compact({{u"format"_s, u"veldmap-map"_s},
                                     {u"version"_s, kMapJsonVersion},
                                     {u"name"_s, roots.roots().empty() ? QString() : roots.roots().front()->getName()},
                                     {u"comment"_s, roots.description()}});
    m_text = head.chopped(1) + ",\"blocks\":[";
    QByteArray separator = "\n";
    for (const VMXMLElement *block : roots.blocks()) {
        m_text += std::exchange(separator, ",\n");
        walkBlock(*block, MapArrays::EachMember, *this, m_findings);
    }
    return m_text + "\n]}\n";
}

bool JsonExport::beginBlock(const MapPlace &block)
{
    m_blockAddress = block.address;
    const bool isChip = block.element.getRootArchive() == m_map.chipRootArchive;
    const QJsonObject head = {
        {u"name"_s, block.name},
        {u"path"_s, block.element.getPath()},
        {u"root"_s, isChip ? u"chip"_s : u"soft"_s},
        {u"type"_s, textOrNull(block.element.typedefName)},
        {u"category"_s, textOrNull(block.element.category)},
        {u"comment"_s, plainCommentText(block.element.getComment())},
        {u"address"_s, number(block.address)},
        {u"size"_s, number(block.size)},
    };
    m_text += compact(head).chopped(1) + ",\"registers\":[";
    m_separator = "\n";
    return true;
}

void JsonExport::endBlock(const MapPlace &)
{
    m_text += "],\"memories\":[" + m_memories.join(',') + "]}";
    m_memories.clear();
}

QJsonObject JsonExport::placeJson(const MapPlace &place) const
{
    return {
        {u"name"_s, place.name},
        {u"path"_s, place.element.getPath()},
        {u"address"_s, number(place.address)},
        {u"offset"_s, number(place.address - m_blockAddress)},
        {u"comment"_s, plainCommentText(commentOf(place))},
    };
}

QJsonObject JsonExport::fieldJson(const MapField &field) const
{
    QJsonArray options;
    for (const MapOption &option : field.options)
        options.append(QJsonObject{{u"name"_s, option.option.name},
                                   {u"value"_s, number(option.value)},
                                   {u"comment"_s, plainCommentText(option.option.comment)}});
    const VMEnum *named = m_enums.of(field.field);
    return {
        {u"name"_s, field.field.getName()},
        {u"lsb"_s, field.lowest},
        {u"msb"_s, field.highest()},
        {u"width"_s, field.width},
        {u"mask"_s, number(field.mask)},
        {u"access"_s, field.field.getAccessString()},
        {u"reset"_s, field.reset ? number(*field.reset) : QJsonValue()},
        {u"enum"_s, named ? QJsonValue(named->name) : QJsonValue()},
        {u"comment"_s, plainCommentText(field.field)},
        {u"options"_s, options},
    };
}

void JsonExport::takeRegister(const MapPlace &place, const VMValuable &valuable)
{
    const std::vector<MapField> fields = fieldsOf(valuable, m_findings);
    const MapReset reset = resetOf(fields);
    const HalfNames::Names halves = m_halves.of(valuable);
    QJsonArray list;
    for (const MapField &field : fields)
        list.append(fieldJson(field));
    QJsonArray groups;
    for (const auto &group : valuable.bitGroups) {
        QJsonArray names;
        for (const VMBitField *field : *group)
            names.append(field->getName());
        groups.append(QJsonObject{{u"name"_s, group->name}, {u"fields"_s, names}});
    }
    const auto *pointer = elementCast<VMPointer>(static_cast<const VMXMLElement *>(&valuable));
    QJsonObject object = placeJson(place);
    object[u"kind"_s] = QString(kindWordOf(valuable.getType()));
    object[u"type"_s] = valuable.getTypeString();
    object[u"width"_s] = bitsOf(valuable);
    object[u"access"_s] = valuable.getProtectString();
    object[u"reset"_s] = number(reset.value);
    object[u"resetMask"_s] = number(reset.mask);
    object[u"fields"_s] = list;
    object[u"groups"_s] = groups;
    object[u"lowHalf"_s] = textOrNull(halves.low);
    object[u"highHalf"_s] = textOrNull(halves.high);
    object[u"pointsTo"_s] = pointer ? QJsonValue(pointer->pointedType) : QJsonValue();
    m_text += std::exchange(m_separator, ",\n") + compact(object);
}

void JsonExport::takeMemory(const MapPlace &place)
{
    QJsonObject object = placeJson(place);
    object[u"size"_s] = number(place.size);
    m_memories += compact(object);
}

} // namespace

QByteArray mapJson(const VMMemoryMap &map, ExportFindings &findings)
{
    return JsonExport(map, findings).text();
}

} // namespace veldmap
