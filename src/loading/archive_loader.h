#pragma once

#include <veldmap/findings/callbacks.h>
#include <veldmap/loading/document.h>
#include <veldmap/model/archive.h>

class QDomElement;
class VMBitField;
class VMBitGroup;
class VMStruct;
class VMValuable;
struct VMBitFieldOptions;

/// Reads one description file into an archive. Each file of a load gets a loader of its own, which lives as long as its
/// file is being read and owns nothing: what is finished is handed to the archive.
///
/// A handler gives true or an element on success, false or null on failure, which it has reported by then; a failed tag
/// fails its archive, and so the whole load. Messages have the form "FILE:LINE:COLUMN:TEXT" with the place behind the
/// tag concerned. An element that a handler returns belongs to the caller, unless the handler says otherwise.
///
/// Every call of a host starts with the whole of the limits in findings/limits.h; what exceeds one is an error that
/// names it. A loader may be used again.
class VELDMAP_EXPORT VMArchiveLoader {
public:
    /// Reads the file at \a filePath, which \a root knows as \a relativeFile below \a basePath, with all that it
    /// includes. The archive, which the root owns: a new one, or the one that is there already, with status 2. Null
    /// when there is none; \a status tells why. A \a mandatory file that can't be opened is a warning.
    VMXMLArchive *loadArchiveFromFile(const QString &filePath, const QString &relativeFile, const QString &basePath,
                                      VMRootArchive *root, VMMessageCallback log, VMMessageCallback error,
                                      VMMessageCallback warning, bool mandatory, XMDOpenError &status);
    /// Builds the archive of an `archive` tag; the root owns it. Null on failure, when the archive is deleted.
    VMXMLArchive *manageArchiveTag(QDomElement &tag, const QString &relativeFile, const QString &basePath,
                                   VMRootArchive *root, VMMessageCallback log, VMMessageCallback error,
                                   VMMessageCallback warning);

    void ErrorMessage(const QString &file, int line, int column, const QString &message) const;
    void WarningMessage(const QString &file, int line, int column, const QString &message) const;
    void LogMessage(const QString &file, int line, int column, const QString &message) const;

    /// 0 on success, 1 when the last file tried was not found, 3 when the archive must fail.
    XMDOpenError manageIncludeTag(QDomElement &tag, VMXMLArchive *archive);
    /// Records one alternative in \a include and, with \a load, loads its file.
    XMDOpenError manageIncludeEntry(VMXMLArchive *archive, VMXMLInclude &include, const QString &file,
                                    const QString &condition, bool load, bool optional);

    bool manageVarTag(QDomElement &tag, VMXMLArchive *archive);
    bool manageRangeTag(QDomElement &tag, VMXMLArchive *archive);
    bool manageEnumTag(QDomElement &tag, VMXMLArchive *archive);
    bool manageEnumEntryTag(QDomElement &tag, VMEnum *owner, VMXMLArchive *archive);
    bool manageEnumBoundTag(QDomElement &tag, VMEnum *owner, VMXMLArchive *archive);
    bool manageSpacerTag(QDomElement &tag, VMXMLArchive *archive);

    /// The template, which the archive owns: the new one, or the one of that name that is there already.
    VMXMLElement *manageModuleOrTypedefTag(QDomElement &tag, VMXMLArchive *archive);
    /// Reads the children of a module or typedef into \a module.
    bool manageModuleOrTypedefTag(QDomElement &tag, VMStruct *module);
    VMXMLElement *manageStructTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName);
    VMXMLElement *manageHoleTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName);
    bool manageAliasTag(QDomElement &tag, VMXMLArchive *archive);

    /// A top-level instance, which the root archive owns.
    VMXMLElement *manageInstanceTag(QDomElement &tag, VMXMLArchive *archive);
    /// An instance inside a structure.
    VMXMLElement *manageInstanceTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName);
    VMXMLElement *manageMemoryTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName);
    VMXMLElement *managePtrTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName);

    /// \a tagName is the tag's name in lower case, which decides the class.
    VMXMLElement *manageValuableTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName,
                                    const QString &tagName);

    bool manageBitsTag(QDomElement &tag, VMValuable *valuable, VMXMLArchive *archive);

    bool manageBitgroupTag(QDomElement &tag, VMValuable *valuable, VMXMLArchive *archive);
    bool manageBitgroupEntryTag(QDomElement &tag, VMBitGroup *group, VMXMLArchive *archive);
    bool manageOptionsTag(QDomElement &tag, VMBitField *field, VMXMLArchive *archive);
    bool manageOptionsOptionTag(QDomElement &tag, VMBitFieldOptions *options, VMXMLArchive *archive);

private:
    veldmap::Callbacks m_callbacks;
};
