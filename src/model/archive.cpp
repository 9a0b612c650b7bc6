#include "model/archive.h"

#include "model/root_archive.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

VMTemplateManager::VMTemplateManager(VMXMLArchive *) {}

void VMTemplateManager::addTemplate(VMXMLElement *element, const QString &name)
{
    emplace_back(element);
    element->typedefName = name;
}

VMXMLArchive::VMXMLArchive(VMRootArchive *root)
    : VMXMLElement(u"archive"_s, XML_ARCHIVE), variables(std::make_unique<VMVariableManager>(this)), templates(this)
{
    parent = root;
}

VMXMLArchive::~VMXMLArchive()
{
    variables.reset();
}

int VMXMLArchive::sizeOf() const
{
    return 0;
}

int VMXMLArchive::getAlignConstraint() const
{
    return 0;
}

const QString &VMXMLArchive::getComment() const
{
    return archiveComment;
}

QString VMXMLArchive::getTypeString() const
{
    return u"archive"_s;
}

int VMXMLArchive::dumpInfo(int level) const
{
    int size = dumpLine(level, sizeof(*this));
    for (const auto &element : templates)
        size += element->dumpInfo(level + 1);
    return size;
}

VMXMLElement *VMXMLArchive::contains(const QString &typeName) const
{
    const auto element = std::ranges::find_if(templates, [&](const auto &candidate) {
        return candidate->getTypeString() == typeName || candidate->typedefName == typeName;
    });
    return element == templates.end() ? nullptr : element->get();
}

QString VMXMLArchive::getTotalPath() const
{
    return QDir::cleanPath(basePath + u'/' + relativeFileName);
}

QString VMXMLArchive::getRelativePath(bool withFile) const
{
    if (withFile)
        return relativeFileName;
    const QString directory = QFileInfo(relativeFileName).path();
    return directory == "."_L1 ? QString() : directory;
}

QString VMXMLArchive::getBaseName() const
{
    return QFileInfo(relativeFileName).baseName();
}

QString VMXMLArchive::besideDescription(const QString &fileName) const
{
    const QString directory = getRelativePath(false);
    return directory.isEmpty() ? fileName : directory + u'/' + fileName;
}

QString VMXMLArchive::getHFileRelativeName() const
{
    return besideDescription(getBaseName() + ".h"_L1);
}

QString VMXMLArchive::getASMFileRelativeName() const
{
    return besideDescription(getBaseName() + "_asm.h"_L1);
}

QString VMXMLArchive::getVHDLFileRelativeName() const
{
    return besideDescription(getVHDLPkgName() + ".vhd"_L1);
}

QString VMXMLArchive::getVHDLPkgName() const
{
    return vhdlPackage.isEmpty() ? getBaseName() + "_reg_pkg"_L1 : vhdlPackage;
}
