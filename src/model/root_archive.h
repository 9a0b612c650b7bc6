#pragma once

#include <veldmap/model/element.h>

#include <QList>

#include <memory>
#include <vector>

class VMMemoryMap;

/// The root of one loaded description: all files that belong to it, and the top-level instances.
///
/// Owns the instances and the archives. Lookups walk the lists, so a host may change lists and names as it likes. Text:
/// headers/instance_macros.cpp, docsite/menu.cpp.
class VELDMAP_EXPORT VMRootArchive : public VMXMLElement {
public:
    VMRootArchive(VMMemoryMap *map, const QString &name);
    VMRootArchive(const VMRootArchive &) = delete;
    ~VMRootArchive() override;

    static bool matches(const VMXMLElement &element) { return element.getType() == XML_ROOT_ARCHIVE; }

    int sizeOf() const override;
    int getAlignConstraint() const override;
    const QString &getName() const override;
    QString getTypeString() const override;
    int dumpInfo(int level) const override;

    /// Appends \a archive and takes ownership of it.
    void addXMLArchive(VMXMLArchive *archive);
    /// Deletes \a archive, which failed to load, and forgets it wherever it was included.
    void discardXMLArchive(VMXMLArchive *archive);
    /// The first archive with that identity, or null.
    VMXMLArchive *hasArchive(const QString &basePath, const QString &relativeFile) const;
    /// The template of that name, or null. The earliest archive wins, whichever file asks.
    VMXMLElement *getTemplate(const QString &typeName) const;
    const std::vector<std::unique_ptr<VMXMLElement>> &getInstanciatedTemplates() const;
    /// A new element of the type, named \a name and at offset 0: a built-in word or a template. Null when there is no
    /// such type. The caller owns the result.
    VMXMLElement *allocateElementFromTypeName(const QString &typeName, const QString &name) const;
    /// Appends a copy of the template as an instance at the absolute \a address; null when there is no such template.
    /// The root archive owns the result.
    VMXMLElement *instanciateTemplate(const QString &typeName, const QString &name, unsigned int address);
    /// The same for the template \a type itself.
    VMXMLElement *addInstance(const VMXMLElement &type, const QString &name, unsigned int address);
    /// The same, but of a structure as VMStruct::outlineOf() makes it.
    VMXMLElement *addOutline(const VMXMLElement &type, const QString &name, unsigned int address);

    using VMXMLElement::treenode_serialize;
    /// The script of the documentation site's menu: its settings, its top, and the nodes of each instance.
    QString treenode_serialize() const;

    /// The base address macros of the instances of the template \a element.
    QString c_getMatchingInstancesBaseAddresses(const VMXMLElement *element) const;
    /// The address macros of the instances of the template \a element for assembly code.
    QString c_getMatchingInstancesAsmDescription(const VMXMLElement *element) const;
    /// The typed pointers to the instances of the template \a element. Traces each instance on the standard output.
    QString c_getMatchingInstancesInstanciation(const VMXMLElement *element) const;

    QList<VMXMLArchive *> xmlArchives;                    ///< in the order of creation; the first is the root file
    std::vector<std::unique_ptr<VMXMLElement>> instances; ///< in load order
    QString rootName;
    VMMemoryMap *memoryMap; ///< not owned

private:
    VMXMLElement *placeInstance(std::unique_ptr<VMXMLElement> copy, const QString &name, unsigned int address);

    std::vector<std::unique_ptr<VMXMLArchive>> m_ownedArchives;
};
