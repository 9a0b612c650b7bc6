#include "model/root_archive.h"

#include "model/aggregates.h"
#include "model/archive.h"
#include "model/scalars.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

VMRootArchive::VMRootArchive(VMMemoryMap *map, const QString &name)
    : VMXMLElement(name, XML_ROOT_ARCHIVE), rootName(name), memoryMap(map)
{
}

VMRootArchive::~VMRootArchive()
{
    instances.clear();
    xmlArchives.clear();
}

int VMRootArchive::sizeOf() const
{
    return 0;
}

int VMRootArchive::getAlignConstraint() const
{
    return 0;
}

const QString &VMRootArchive::getName() const
{
    return rootName;
}

QString VMRootArchive::getRubyClassName() const
{
    return {};
}

QString VMRootArchive::getRubyPrefix() const
{
    return {};
}

QString VMRootArchive::getTypeString() const
{
    return u"rootarchive"_s;
}

int VMRootArchive::dumpInfo(int level) const
{
    int size = dumpLine(level, sizeof(*this));
    for (const auto &instance : instances)
        size += instance->dumpInfo(level + 1);
    return size;
}

void VMRootArchive::addXMLArchive(VMXMLArchive *archive)
{
    m_ownedArchives.emplace_back(archive);
    xmlArchives.append(archive);
    archive->m_number = m_nextArchiveNumber++;
    archive->m_isInRoot = true;
    for (std::size_t position = 0; position < archive->templates.size(); ++position)
        indexTemplate(archive, position);
}

void VMRootArchive::discardXMLArchive(VMXMLArchive *archive)
{
    ++m_discardedArchives;
    xmlArchives.removeAll(archive);
    for (VMXMLArchive *other : std::as_const(xmlArchives))
        other->includedArchives.removeAll(archive);
    m_templates.removeArchive(archive->m_number);
    m_files.clear();
    m_indexedFiles = 0;
    std::erase_if(m_ownedArchives, [archive](const auto &owned) { return owned.get() == archive; });
}

VMXMLArchive *VMRootArchive::hasArchive(const QString &basePath, const QString &relativeFile) const
{
    for (; m_indexedFiles < xmlArchives.size(); ++m_indexedFiles) {
        VMXMLArchive *archive = xmlArchives[m_indexedFiles];
        const auto identity = std::make_pair(archive->basePath, archive->getRelativePath(true));
        if (!m_files.contains(identity))
            m_files.insert(identity, archive);
    }
    return m_files.value({basePath, relativeFile});
}

VMXMLElement *VMRootArchive::getTemplate(const QString &typeName) const
{
    return m_templates.findFirst(typeName);
}

void VMRootArchive::indexTemplate(VMXMLArchive *archive, std::size_t position)
{
    if (archive->m_isInRoot) // else addXMLArchive does it
        m_templates.add({archive->m_number, position}, archive->templates[position].get(), true);
}

void VMRootArchive::typeWordChanged()
{
    m_templates.invalidate();
    m_instances.invalidate();
}

const std::vector<std::unique_ptr<VMXMLElement>> &VMRootArchive::getInstanciatedTemplates() const
{
    return instances;
}

VMXMLElement *VMRootArchive::allocateElementFromTypeName(const QString &typeName, const QString &name) const
{
    using Make = std::unique_ptr<VMXMLElement> (*)(const QString &);
    struct BuiltInRow {
        QLatin1StringView word;
        Make make;
    };
    constexpr auto make = []<typename T>(std::type_identity<T>) -> Make {
        return [](const QString &n) -> std::unique_ptr<VMXMLElement> { return std::make_unique<T>(n); };
    };
    static const BuiltInRow kBuiltIns[] = {
        {"uint"_L1, make(std::type_identity<VMUnsignedInt32>())},
        {"uint32"_L1, make(std::type_identity<VMUnsignedInt32>())},
        {"uint16"_L1, make(std::type_identity<VMUnsignedInt16>())},
        {"uint8"_L1, make(std::type_identity<VMUnsignedInt8>())},
        {"bool"_L1, make(std::type_identity<VMBoolean>())},
        {"void"_L1, make(std::type_identity<VMVoid>())},
        {"int"_L1, make(std::type_identity<VMInt32>())},
        {"int32"_L1, make(std::type_identity<VMInt32>())},
        {"int16"_L1, make(std::type_identity<VMInt16>())},
        {"int8"_L1, make(std::type_identity<VMInt8>())},
        {"memory"_L1,
         [](const QString &n) -> std::unique_ptr<VMXMLElement> { return std::make_unique<VMMemory>(n, 0); }},
    };
    const auto row = std::ranges::find_if(kBuiltIns, [&](const BuiltInRow &r) { return r.word == typeName; });
    std::unique_ptr<VMXMLElement> element;
    if (row != std::end(kBuiltIns)) {
        element = row->make(name);
    } else if (const VMXMLElement *known = getTemplate(typeName)) {
        element.reset(anonymousCopy(known));
        element->setName(name);
    }
    if (element)
        element->remap(0);
    return element.release();
}

VMXMLElement *VMRootArchive::instanciateTemplate(const QString &typeName, const QString &name, unsigned int address)
{
    const VMXMLElement *known = getTemplate(typeName);
    if (!known)
        return nullptr;
    instances.emplace_back(anonymousCopy(known));
    VMXMLElement *instance = instances.back().get();
    instance->setName(name);
    instance->remap(address);
    instance->reparent(this);
    return instance;
}

QList<VMXMLElement *> VMRootArchive::matchingInstances(const VMXMLElement *element) const
{
    if (m_indexedInstances > instances.size()) { // a host has taken some away
        m_instances.clear();
        m_indexedInstances = 0;
    }
    for (; m_indexedInstances < instances.size(); ++m_indexedInstances)
        m_instances.add({0, m_indexedInstances}, instances[m_indexedInstances].get(), false);
    return m_instances.findAll(element->getTypeString());
}
