#include "model/root_archive.h"

#include "model/aggregates.h"
#include "model/archive.h"
#include "model/kinds.h"
#include "model/valuable.h"

#include <algorithm>
#include <utility>

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
}

void VMRootArchive::discardXMLArchive(VMXMLArchive *archive)
{
    xmlArchives.removeAll(archive);
    for (VMXMLArchive *other : std::as_const(xmlArchives))
        other->includedArchives.removeAll(archive);
    std::erase_if(m_ownedArchives, [archive](const auto &owned) { return owned.get() == archive; });
}

VMXMLArchive *VMRootArchive::hasArchive(const QString &basePath, const QString &relativeFile) const
{
    const auto known = std::ranges::find_if(xmlArchives, [&](const VMXMLArchive *archive) {
        return archive->relativeFileName == relativeFile && archive->basePath == basePath;
    });
    return known == xmlArchives.end() ? nullptr : *known;
}

VMXMLElement *VMRootArchive::getTemplate(const QString &typeName) const
{
    for (const VMXMLArchive *archive : xmlArchives) {
        if (VMXMLElement *element = archive->contains(typeName))
            return element;
    }
    return nullptr;
}

const std::vector<std::unique_ptr<VMXMLElement>> &VMRootArchive::getInstanciatedTemplates() const
{
    return instances;
}

VMXMLElement *VMRootArchive::allocateElementFromTypeName(const QString &typeName, const QString &name) const
{
    std::unique_ptr<VMXMLElement> element;
    if (const veldmap::ScalarKind *kind = veldmap::scalarKindNamed(typeName, veldmap::kPointedType)) {
        element = kind->make(name, true, true);
    } else if (typeName == veldmap::kMemoryWord) {
        element = std::make_unique<VMMemory>(name, 0);
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
    return known ? addInstance(*known, name, address) : nullptr;
}

VMXMLElement *VMRootArchive::addInstance(const VMXMLElement &type, const QString &name, unsigned int address)
{
    return placeInstance(std::unique_ptr<VMXMLElement>(anonymousCopy(&type)), name, address);
}

VMXMLElement *VMRootArchive::addOutline(const VMXMLElement &type, const QString &name, unsigned int address)
{
    const auto *structure = elementCast<VMStruct>(&type);
    return structure ? placeInstance(VMStruct::outlineOf(*structure), name, address) : addInstance(type, name, address);
}

VMXMLElement *VMRootArchive::placeInstance(std::unique_ptr<VMXMLElement> copy, const QString &name,
                                           unsigned int address)
{
    instances.push_back(std::move(copy));
    VMXMLElement *instance = instances.back().get();
    instance->setName(name);
    instance->remap(address);
    instance->reparent(this);
    return instance;
}
