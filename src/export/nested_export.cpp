#include "export/nested_export.h"

#include "export/export_rules.h"
#include "model/kinds.h"
#include "model/pointer.h"

using namespace Qt::StringLiterals;

namespace veldmap {

NestedExport::NestedExport(QLatin1StringView format, ExportFindings &findings) : m_format(format), m_findings(findings)
{
}

void NestedExport::beginScope()
{
    m_scopes.push_back(newScope());
}

void NestedExport::endScope()
{
    m_scopes.pop_back();
}

bool NestedExport::beginGroup(const MapPlace &group)
{
    m_groups.push_back(&group);
    return true;
}

void NestedExport::endGroup(const MapPlace &group)
{
    m_groups.pop_back();
    if (m_opened <= m_groups.size()) {
        tell(rules::exportEmptyGroup, group.declared.source, {group.name, format()});
        return;
    }
    --m_opened;
    closeGroup();
    endScope();
}

void NestedExport::openPending()
{
    for (; m_opened < m_groups.size(); ++m_opened) {
        const MapPlace &group = *m_groups[m_opened];
        const QString name = nameOf(group);
        openGroup(group, name);
        beginScope();
    }
}

void NestedExport::takeRegister(const MapPlace &place, const VMValuable &valuable)
{
    if (valuable.getType() == VMXMLElement::XML_INTERNAL_REGISTER8) {
        const QString fate = takesOtherBus() ? u"it is written as one of memory"_s : u"it is left out"_s;
        tell(rules::exportOtherBus, place.declared.source, {place.name, format(), fate});
        if (!takesOtherBus())
            return;
    }
    const std::vector<MapField> fields = fieldsOf(valuable, m_findings);
    const MapAccess access = accessOf(valuable, fields);
    if (!access.isReadable && !access.isWritable()) {
        tell(rules::exportNoAccess, place.declared.source, {format(), place.name});
        return;
    }
    tellLosses(place, valuable);
    openPending();
    writeRegister(place, nameOf(place), valuable, access, fields);
}

void NestedExport::tellLosses(const MapPlace &place, const VMValuable &valuable)
{
    if (const HalfNames::Names halves = m_halves.of(valuable); !halves.low.isEmpty() || !halves.high.isEmpty())
        tell(rules::exportHalfNames, place.declared.source, {format(), place.name});
    for (const auto &group : valuable.bitGroups) // whose copies have no place of their own
        tell(rules::exportBitGroup, group->isEmpty() ? place.declared.source : group->first()->source,
             {format(), group->name});
    tellLossesOfType(place, valuable);
}

void NestedExport::tellLossesOfType(const MapPlace &place, const VMValuable &valuable)
{
    if (const auto *pointer = elementCast<VMPointer>(static_cast<const VMXMLElement *>(&valuable)))
        tell(rules::exportPointer, place.declared.source, {format(), place.name, pointer->pointedType});
    else if (valuable.isSigned())
        tell(rules::exportSigned, place.declared.source, {format(), place.name});
}

namespace {

/// Whether no access reaches both: what is read there is one, what is written the other.
bool areApart(const MapAccess &one, const MapAccess &other)
{
    return (!one.isReadable || !other.isReadable) && (!one.isWritable() || !other.isWritable());
}

} // namespace

std::vector<MapField> withoutOverlaps(std::vector<MapField> fields, QLatin1StringView format, ExportFindings &findings)
{
    std::vector<MapField> kept;
    kept.reserve(fields.size());
    for (MapField &field : fields) {
        const MapField *over = nullptr;
        for (const MapField &other : kept) {
            if ((other.mask & field.mask) && !areApart(accessOf(other.field), accessOf(field.field)))
                over = &other;
        }
        if (over)
            findings.add(rules::exportFieldOverlap, field.field.source,
                         {field.field.getName(), over->field.getName(), format});
        else
            kept.push_back(std::move(field));
    }
    return kept;
}

MapAccess accessOf(const VMValuable &valuable, const std::vector<MapField> &fields)
{
    MapAccess access = accessOf(valuable);
    if (access.isReadable || access.isWritable())
        return access;
    for (const MapField &each : fields) {
        const MapAccess own = accessOf(each.field);
        access.isReadable = access.isReadable || own.isReadable;
        if (own.isWritable())
            access.writeMode = 1;
    }
    return access;
}

} // namespace veldmap
