#include "export/fields_csv.h"

#include "export/comment_text.h"
#include "export/export_rules.h"
#include "export/exported_roots.h"
#include "export/map_walk.h"
#include "model/kinds.h"
#include "text/lines.h"

#include <initializer_list>

using namespace Qt::StringLiterals;

// A line of a field:
//
//     UART0,$UART0.ctrl,0x40034000,32,register32,Reg32,rw,Control,speed,1,3,3,0x0000000E,rw,2,slow=0; fast=5,,Speed

namespace veldmap {

namespace {

constexpr QLatin1StringView kFormat = "CSV"_L1;

constexpr QLatin1StringView kColumns = "block,register,address,width,kind,type,access,comment,"
                                       "field,lsb,msb,bits,mask,field_access,reset,options,groups,field_comment\r\n"_L1;
constexpr int kFieldColumns = 10;

QString hex(quint32 number)
{
    return "0x"_L1 + hex8(number);
}

class CsvExport final : public MapListener {
public:
    CsvExport(const VMMemoryMap &map, ExportFindings &findings) : m_map(map), m_findings(findings) {}

    QByteArray text();

    bool beginBlock(const MapPlace &block) override;
    void endBlock(const MapPlace &) override {}
    bool beginGroup(const MapPlace &) override { return true; }
    void endGroup(const MapPlace &) override {}
    void takeRegister(const MapPlace &place, const VMValuable &valuable) override;
    void takeMemory(const MapPlace &place) override;

private:
    void take(QStringView value);
    void takeAll(std::initializer_list<QString> values);
    void endLine();
    void takePlace(const MapPlace &place, const QString &width, const QString &type, const QString &access);
    void takeField(const MapField &field, const QString &groups);

    const VMMemoryMap &m_map;
    ExportFindings &m_findings;
    HalfNames m_halves;
    QString m_block;
    QByteArray m_text;
    bool m_isFirst = true; // in the line
};

QByteArray CsvExport::text()
{
    const ExportedRoots roots(m_map, kFormat, {.needsRoom = false}, m_findings);
    for (const VMRootArchive *root : roots.roots())
        m_halves.take(*root);
    m_text.append(kColumns.data(), kColumns.size());
    for (const VMXMLElement *block : roots.blocks())
        walkBlock(*block, MapArrays::EachMember, *this, m_findings);
    return m_text;
}

void CsvExport::take(QStringView value)
{
    if (!std::exchange(m_isFirst, false))
        m_text += ',';
    const bool isPlain = !value.contains(u',') && !value.contains(u'"') && !value.contains(u'\n') &&
                         !value.contains(u'\r') && value.trimmed().size() == value.size();
    if (isPlain) {
        m_text += value.toUtf8();
        return;
    }
    m_text += '"';
    m_text += value.toString().replace(u'"', "\"\""_L1).toUtf8();
    m_text += '"';
}

void CsvExport::takeAll(std::initializer_list<QString> values)
{
    for (const QString &value : values)
        take(value);
}

void CsvExport::endLine()
{
    m_text += "\r\n";
    m_isFirst = true;
}

bool CsvExport::beginBlock(const MapPlace &block)
{
    m_block = block.name;
    return true;
}

void CsvExport::takePlace(const MapPlace &place, const QString &width, const QString &type, const QString &access)
{
    takeAll({m_block, place.element.getPath(), hex(place.address), width, kindWordOf(place.element.getType()), type,
             access, plainCommentText(commentOf(place))});
}

void CsvExport::takeField(const MapField &field, const QString &groups)
{
    QStringList options;
    for (const MapOption &option : field.options)
        options += option.option.name + u'=' + QString::number(option.value);
    takeAll({field.field.getName(), QString::number(field.lowest), QString::number(field.highest()),
             QString::number(field.width), hex(field.mask), field.field.getAccessString(),
             field.reset ? QString::number(*field.reset) : QString(), options.join("; "_L1), groups,
             plainCommentText(field.field)});
}

void CsvExport::takeRegister(const MapPlace &place, const VMValuable &valuable)
{
    if (const HalfNames::Names halves = m_halves.of(valuable); !halves.low.isEmpty() || !halves.high.isEmpty())
        m_findings.add(rules::exportHalfNames, place.declared.source, {kFormat, place.name});
    const auto takeStart = [&] {
        takePlace(place, QString::number(bitsOf(valuable)), valuable.getTypeString(), valuable.getProtectString());
    };
    QHash<const VMBitField *, QStringList> groups;
    for (const auto &group : valuable.bitGroups) {
        for (const VMBitField *field : *group)
            groups[field] += group->name;
    }
    const std::vector<MapField> fields = fieldsOf(valuable, m_findings);
    for (const MapField &field : fields) {
        takeStart();
        takeField(field, groups.value(&field.field).join("; "_L1));
        endLine();
    }
    if (!fields.empty())
        return;
    takeStart();
    for (int column = 0; column < kFieldColumns; ++column)
        take({});
    endLine();
}

void CsvExport::takeMemory(const MapPlace &place)
{
    takePlace(place, QString::number(8 * qint64(place.size)), {}, {});
    for (int column = 0; column < kFieldColumns; ++column)
        take({});
    endLine();
}

} // namespace

QByteArray fieldsCsv(const VMMemoryMap &map, ExportFindings &findings)
{
    return CsvExport(map, findings).text();
}

} // namespace veldmap
