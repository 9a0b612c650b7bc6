#include "site/site_plan.h"

#include "model/memory_map.h"
#include "model/visit.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Names that the site has for pages of its own.
constexpr QLatin1StringView kOwnPages[] = {"index"_L1, "types"_L1, "enums"_L1, "variables"_L1, "manual"_L1};

/// Whether the headers know \a element as a type. What stands for an enum is the enum.
bool isType(const VMXMLElement &element)
{
    const auto *valuable = elementCast<VMValuable>(&element);
    return !valuable || !valuable->enumTemplate;
}

} // namespace

SitePlan::SitePlan(const VMMemoryMap &map)
{
    m_hasBothRoots = map.chipRootArchive && map.softRootArchive;
    if (map.chipRootArchive)
        addRoot(*map.chipRootArchive, true);
    if (map.softRootArchive)
        addRoot(*map.softRootArchive, false);
    findUsers();
    sortInstances();
    namePages();
}

void SitePlan::addRoot(const VMRootArchive &root, bool isChip)
{
    if (m_title.isEmpty())
        m_title = root.getName();
    if (m_comment.isEmpty() && !root.xmlArchives.isEmpty())
        m_comment = root.xmlArchives.first()->archiveComment;
    for (const VMXMLArchive *archive : root.xmlArchives) {
        m_archives.push_back({archive, isChip});
        m_relativeFiles.insert(archive->getTotalPath(), archive->relativeFileName);
        m_hasEnums = m_hasEnums || !archive->variables->enums.empty();
        m_hasVariables = m_hasVariables || std::ranges::any_of(*archive->variables, [](const VMIntVar &variable) {
                             return !variable.ownerEnum && !isSpacer(variable);
                         });
    }
    addTypes(root, isChip);
    addInstances(root, isChip);
}

void SitePlan::addTypes(const VMRootArchive &root, bool isChip)
{
    for (const VMXMLArchive *archive : root.xmlArchives) {
        for (const auto &element : archive->templates) {
            if (!isType(*element))
                continue;
            const auto at = static_cast<qsizetype>(m_types.size());
            if (!typesNamed(isChip).contains(element->typedefName))
                typesNamed(isChip).insert(element->typedefName, at);
            SiteType type = {element.get(), archive, isChip};
            type.hasAsm = archive->generateAsm;
            m_types.push_back(std::move(type));
        }
    }
}

void SitePlan::addInstances(const VMRootArchive &root, bool isChip)
{
    for (const auto &element : root.instances)
        m_instances.push_back(
            {element.get(), isChip, typesNamed(isChip).value(element->typedefName, -1), QString(), {}});
}

void SitePlan::findUsers()
{
    const auto note = [this](qsizetype user, const VMXMLElement *member) {
        while (const auto *array = elementCast<VMArray>(member))
            member = array->prototype.get();
        const auto used = typesNamed(m_types[static_cast<std::size_t>(user)].isChip).value(member->typedefName, -1);
        if (used < 0 || member->typedefName.isEmpty())
            return;
        QList<qsizetype> &users = m_types[static_cast<std::size_t>(used)].users;
        if (users.isEmpty() || users.last() != user)
            users += user;
    };
    for (qsizetype at = 0; const SiteType &type : m_types) {
        if (const auto *structure = elementCast<VMStruct>(type.element)) {
            for (const auto &member : structure->memberList)
                note(at, member.get());
        }
        ++at;
    }
}

void SitePlan::sortInstances()
{
    std::ranges::stable_sort(m_instances, {}, [](const SiteInstance &it) { return it.element->getBaseAddress(); });
    for (qsizetype at = 0; const SiteInstance &instance : m_instances) {
        if (instance.type >= 0)
            m_types[static_cast<std::size_t>(instance.type)].instances += at;
        ++at;
    }
}

void SitePlan::namePages()
{
    PageNames names;
    PageIds ids;
    for (const QLatin1StringView own : kOwnPages)
        names.take(own);
    for (SiteInstance &instance : m_instances) {
        instance.file = names.take(instance.element->getName());
        instance.id = ids.take({}, instance.element->getName());
    }
    for (SiteType &type : m_types) {
        type.hasPage = type.instances.size() != 1;
        if (type.hasPage) {
            type.file = names.take("type-"_L1 + type.element->typedefName);
            type.id = ids.take({}, "type-"_L1 + type.element->typedefName);
        } else {
            const SiteInstance &only = m_instances[static_cast<std::size_t>(type.instances.first())];
            type.file = only.file;
            type.id = only.id;
        }
    }
}

const SiteType *SitePlan::typeNamed(const QString &name, bool isChip) const
{
    if (name.isEmpty())
        return nullptr;
    const qsizetype at = m_typesNamed[isChip ? 0 : 1].value(name, -1);
    return at < 0 ? nullptr : &m_types[static_cast<std::size_t>(at)];
}

QString SitePlan::fileOf(const SourcePlace &place) const
{
    const QString name = place.file.name();
    return m_relativeFiles.value(name, name);
}

} // namespace veldmap
