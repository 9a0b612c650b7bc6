#include "loading/archive_loader.h"

#include "xml/tag_attributes.h"

using veldmap::TagDocument;

// The handlers as a host calls them, on elements of a QDomDocument.

VMXMLArchive *VMArchiveLoader::manageArchiveTag(QDomElement &tag, const QString &relativeFile, const QString &basePath,
                                                VMRootArchive *root, VMMessageCallback, VMMessageCallback,
                                                VMMessageCallback)
{
    return manageArchiveTag(TagDocument(tag).root(), relativeFile, basePath, root);
}

XMDOpenError VMArchiveLoader::manageIncludeTag(QDomElement &tag, VMXMLArchive *archive)
{
    return manageIncludeTag(TagDocument(tag).root(), archive);
}

bool VMArchiveLoader::manageVarTag(QDomElement &tag, VMXMLArchive *archive)
{
    return manageVarTag(TagDocument(tag).root(), archive);
}

bool VMArchiveLoader::manageRangeTag(QDomElement &tag, VMXMLArchive *archive)
{
    return manageRangeTag(TagDocument(tag).root(), archive);
}

bool VMArchiveLoader::manageEnumTag(QDomElement &tag, VMXMLArchive *archive)
{
    return manageEnumTag(TagDocument(tag).root(), archive);
}

bool VMArchiveLoader::manageEnumEntryTag(QDomElement &tag, VMEnum *owner, VMXMLArchive *archive)
{
    return manageEnumEntryTag(TagDocument(tag).root(), owner, archive);
}

bool VMArchiveLoader::manageEnumBoundTag(QDomElement &tag, VMEnum *owner, VMXMLArchive *archive)
{
    return manageEnumBoundTag(TagDocument(tag).root(), owner, archive);
}

bool VMArchiveLoader::manageSpacerTag(QDomElement &tag, VMXMLArchive *archive)
{
    return manageSpacerTag(TagDocument(tag).root(), archive);
}

VMXMLElement *VMArchiveLoader::manageModuleOrTypedefTag(QDomElement &tag, VMXMLArchive *archive)
{
    return manageModuleOrTypedefTag(TagDocument(tag).root(), archive);
}

bool VMArchiveLoader::manageModuleOrTypedefTag(QDomElement &tag, VMStruct *module)
{
    return manageModuleOrTypedefTag(TagDocument(tag).root(), module);
}

VMXMLElement *VMArchiveLoader::manageStructTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName)
{
    return manageStructTag(TagDocument(tag).root(), archive, parentName);
}

VMXMLElement *VMArchiveLoader::manageHoleTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName)
{
    return manageHoleTag(TagDocument(tag).root(), archive, parentName);
}

bool VMArchiveLoader::manageAliasTag(QDomElement &tag, VMXMLArchive *archive)
{
    return manageAliasTag(TagDocument(tag).root(), archive);
}

VMXMLElement *VMArchiveLoader::manageInstanceTag(QDomElement &tag, VMXMLArchive *archive)
{
    return manageInstanceTag(TagDocument(tag).root(), archive);
}

VMXMLElement *VMArchiveLoader::manageInstanceTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName)
{
    return manageInstanceTag(TagDocument(tag).root(), archive, parentName);
}

VMXMLElement *VMArchiveLoader::manageMemoryTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName)
{
    return manageMemoryTag(TagDocument(tag).root(), archive, parentName);
}

VMXMLElement *VMArchiveLoader::managePtrTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName)
{
    return managePtrTag(TagDocument(tag).root(), archive, parentName);
}

VMXMLElement *VMArchiveLoader::manageValuableTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName,
                                                 const QString &tagName)
{
    return manageValuableTag(TagDocument(tag).root(), archive, parentName, tagName);
}

bool VMArchiveLoader::manageBitsTag(QDomElement &tag, VMValuable *valuable, VMXMLArchive *archive)
{
    return manageBitsTag(TagDocument(tag).root(), valuable, archive);
}

bool VMArchiveLoader::manageBitgroupTag(QDomElement &tag, VMValuable *valuable, VMXMLArchive *archive)
{
    return manageBitgroupTag(TagDocument(tag).root(), valuable, archive);
}

bool VMArchiveLoader::manageBitgroupEntryTag(QDomElement &tag, VMBitGroup *group, VMXMLArchive *archive)
{
    return manageBitgroupEntryTag(TagDocument(tag).root(), group, archive);
}

bool VMArchiveLoader::manageOptionsTag(QDomElement &tag, VMBitField *field, VMXMLArchive *archive)
{
    return manageOptionsTag(TagDocument(tag).root(), field, archive);
}

bool VMArchiveLoader::manageOptionsOptionTag(QDomElement &tag, VMBitFieldOptions *options, VMXMLArchive *archive)
{
    return manageOptionsOptionTag(TagDocument(tag).root(), options, archive);
}
