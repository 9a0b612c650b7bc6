#include "model/instance_paths.h"

#include "model/root_archive.h"

namespace veldmap {

InstancePaths::InstancePaths(const VMRootArchive &root)
{
    for (const auto &instance : root.instances) {
        const QString type = instance->getTypeString();
        if (!m_firstNames.contains(type))
            m_firstNames.insert(type, u'$' + instance->getName());
    }
}

QString InstancePaths::ofTemplate(const VMXMLElement &element) const
{
    return m_firstNames.value(element.getTypeString(), element.typedefName);
}

QString InstancePaths::of(const VMXMLElement &element) const
{
    const VMXMLElement *parent = element.parent;
    if (!parent || parent->getType() == VMXMLElement::XML_ARCHIVE)
        return ofTemplate(element);
    // The prototype of an array has its number, but is called as the array is.
    return element.arrayNumber != -1 && parent->isArray()
               ? of(*parent) + u'[' + QString::number(element.arrayNumber) + u']'
               : of(*parent) + u'.' + element.getName();
}

} // namespace veldmap
