#pragma once

#include "loading/document.h"
#include "findings/callbacks.h"
#include "model/archive.h"

#include <memory>

class QDomElement;
class VMBitField;
class VMBitGroup;
class VMStruct;
class VMValuable;
struct VMBitFieldOptions;

namespace veldmap {
class Tag;
struct Count;
struct LoadBudget;
} // namespace veldmap

/// Reads one description file into an archive. Each file of a load gets a loader of its own, which lives as long as its
/// file is being read and owns nothing: what is finished is handed to the archive.
///
/// A handler gives true or an element on success, false or null on failure, which it has reported by then; a failed tag
/// fails its archive, and so the whole load. Messages have the form "FILE:LINE:COLUMN:TEXT" with the place behind the
/// tag concerned. An element that a handler returns belongs to the caller, unless the handler says otherwise.
class VELDMAP_EXPORT VMArchiveLoader {
public:
    VMArchiveLoader();

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

    // include_tags.cpp
    /// 0 on success, 1 when the last file tried was not found, 3 when the archive must fail.
    XMDOpenError manageIncludeTag(QDomElement &tag, VMXMLArchive *archive);
    /// Records one alternative in \a include and, with \a load, loads its file.
    XMDOpenError manageIncludeEntry(VMXMLArchive *archive, VMXMLInclude &include, const QString &file,
                                    const QString &condition, bool load, bool optional);

    // variable_tags.cpp
    bool manageVarTag(QDomElement &tag, VMXMLArchive *archive);
    bool manageRangeTag(QDomElement &tag, VMXMLArchive *archive);
    bool manageEnumTag(QDomElement &tag, VMXMLArchive *archive);
    bool manageEnumEntryTag(QDomElement &tag, VMEnum *owner, VMXMLArchive *archive);
    bool manageEnumBoundTag(QDomElement &tag, VMEnum *owner, VMXMLArchive *archive);
    bool manageSpacerTag(QDomElement &tag, VMXMLArchive *archive);

    // module_tags.cpp
    /// The template, which the archive owns: the new one, or the one of that name that is there already.
    VMXMLElement *manageModuleOrTypedefTag(QDomElement &tag, VMXMLArchive *archive);
    /// Reads the children of a module or typedef into \a module.
    bool manageModuleOrTypedefTag(QDomElement &tag, VMStruct *module);
    VMXMLElement *manageStructTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName);
    VMXMLElement *manageHoleTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName);
    bool manageAliasTag(QDomElement &tag, VMXMLArchive *archive);

    // instance_tags.cpp
    /// A top-level instance, which the root archive owns.
    VMXMLElement *manageInstanceTag(QDomElement &tag, VMXMLArchive *archive);
    /// An instance inside a structure.
    VMXMLElement *manageInstanceTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName);
    VMXMLElement *manageMemoryTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName);
    VMXMLElement *managePtrTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName);

    // valuable_tags.cpp
    /// \a tagName is the tag's name in lower case, which decides the class.
    VMXMLElement *manageValuableTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName,
                                    const QString &tagName);

    // bits_tags.cpp
    bool manageBitsTag(QDomElement &tag, VMValuable *valuable, VMXMLArchive *archive);

    // field_detail_tags.cpp
    bool manageBitgroupTag(QDomElement &tag, VMValuable *valuable, VMXMLArchive *archive);
    bool manageBitgroupEntryTag(QDomElement &tag, VMBitGroup *group, VMXMLArchive *archive);
    bool manageOptionsTag(QDomElement &tag, VMBitField *field, VMXMLArchive *archive);
    bool manageOptionsOptionTag(QDomElement &tag, VMBitFieldOptions *options, VMXMLArchive *archive);

private:
    struct ArchiveTagRow;
    struct MemberTagRow;
    struct BitsAttributes;
    struct BitPosition;
    struct BitsCut;
    struct Evaluated {
        int value = 0;
        bool failed = false;
        QString message;
    };

    // The same rules on the loader's own tags; each stands where the list above says.
    VMXMLArchive *manageArchiveTag(const veldmap::Tag &tag, const QString &relativeFile, const QString &basePath,
                                   VMRootArchive *root);
    XMDOpenError manageIncludeTag(const veldmap::Tag &tag, VMXMLArchive *archive);
    bool manageVarTag(const veldmap::Tag &tag, VMXMLArchive *archive);
    bool manageRangeTag(const veldmap::Tag &tag, VMXMLArchive *archive);
    bool manageEnumTag(const veldmap::Tag &tag, VMXMLArchive *archive);
    bool manageEnumEntryTag(const veldmap::Tag &tag, VMEnum *owner, VMXMLArchive *archive);
    bool manageEnumBoundTag(const veldmap::Tag &tag, VMEnum *owner, VMXMLArchive *archive);
    bool manageSpacerTag(const veldmap::Tag &tag, VMXMLArchive *archive);
    VMXMLElement *manageModuleOrTypedefTag(const veldmap::Tag &tag, VMXMLArchive *archive);
    bool manageModuleOrTypedefTag(const veldmap::Tag &tag, VMStruct *module);
    VMXMLElement *manageStructTag(const veldmap::Tag &tag, VMXMLArchive *archive, const QString &parentName);
    VMXMLElement *manageHoleTag(const veldmap::Tag &tag, VMXMLArchive *archive, const QString &parentName);
    bool manageAliasTag(const veldmap::Tag &tag, VMXMLArchive *archive);
    VMXMLElement *manageInstanceTag(const veldmap::Tag &tag, VMXMLArchive *archive);
    VMXMLElement *manageInstanceTag(const veldmap::Tag &tag, VMXMLArchive *archive, const QString &parentName);
    VMXMLElement *manageMemoryTag(const veldmap::Tag &tag, VMXMLArchive *archive, const QString &parentName);
    VMXMLElement *managePtrTag(const veldmap::Tag &tag, VMXMLArchive *archive, const QString &parentName);
    VMXMLElement *manageValuableTag(const veldmap::Tag &tag, VMXMLArchive *archive, const QString &parentName,
                                    const QString &tagName);
    bool manageBitsTag(const veldmap::Tag &tag, VMValuable *valuable, VMXMLArchive *archive);
    bool manageBitgroupTag(const veldmap::Tag &tag, VMValuable *valuable, VMXMLArchive *archive);
    bool manageBitgroupEntryTag(const veldmap::Tag &tag, VMBitGroup *group, VMXMLArchive *archive);
    bool manageOptionsTag(const veldmap::Tag &tag, VMBitField *field, VMXMLArchive *archive);
    bool manageOptionsOptionTag(const veldmap::Tag &tag, VMBitFieldOptions *options, VMXMLArchive *archive);

    VMXMLArchive *loadBigArchive(const veldmap::Tag &tag, const QString &filePath, const QString &relativeFile,
                                 const QString &basePath, VMRootArchive *root, XMDOpenError &status);
    VMXMLArchive *loadBareModule(const veldmap::Tag &tag, const QString &filePath, const QString &relativeFile,
                                 const QString &basePath, VMRootArchive *root, XMDOpenError &status);
    bool readArchiveChild(const veldmap::Tag &child, VMXMLArchive *archive);
    bool isTooManyArchives(const veldmap::Tag &tag, const VMXMLArchive &archive, const VMRootArchive &root);

    /// Reports \a text at \a tag; always false.
    bool fail(const veldmap::Tag &tag, const VMXMLArchive &archive, const QString &text) const;
    static Evaluated evaluate(const QString &expression, const VMXMLArchive &archive);

    /// The row of the tags that may stand in a structure, null for any other.
    static const MemberTagRow *findMemberTag(QStringView tagName);
    std::unique_ptr<VMXMLElement> readMember(const MemberTagRow &row, const veldmap::Tag &tag, VMXMLArchive *archive,
                                             const QString &parentName, QStringView tagName);

    /// Evaluates a count that may not be negative; an error at \a tag otherwise.
    bool readArrayCount(veldmap::Count &count, const veldmap::Tag &tag, const VMXMLArchive &archive,
                        const QString &parentName, QStringView type, const QString &name);
    bool readValuableChild(const veldmap::Tag &child, VMValuable &valuable, VMXMLArchive *archive, QStringView tagName);

    bool readPosition(const BitsAttributes &attributes, const veldmap::Tag &tag, const VMValuable &valuable,
                      const VMXMLArchive &archive, BitPosition &position);
    bool evaluatePosition(BitPosition &position, const QString &name, const veldmap::Tag &tag,
                          const VMValuable &valuable, const VMXMLArchive &archive);
    bool readCut(const BitsAttributes &attributes, const veldmap::Tag &tag, const VMValuable &valuable,
                 const VMXMLArchive &archive, BitsCut &cut);
    bool readBitsChildren(const veldmap::Tag &tag, const QString &name, VMBitField &field, VMXMLArchive *archive);
    /// Hands the field to the valuable, followed by the other pieces of a cut one.
    bool addPieces(std::unique_ptr<VMBitField> first, std::unique_ptr<VMBitGroup> group, const BitsCut &cut,
                   const QString &name, const veldmap::Tag &tag, VMValuable &valuable, const VMXMLArchive &archive);

    /// \a element, or with a count an array of it under \a name; null when the array is too large.
    VMXMLElement *arrayOf(std::unique_ptr<VMXMLElement> element, const veldmap::Count &count, const QString &name,
                          const veldmap::Tag &tag, const VMXMLArchive &archive);
    /// Counts \a elements more that are made by copying; false, with an error at \a tag, when they are too many.
    bool mayCopy(qint64 elements, const veldmap::Tag &tag, const VMXMLArchive &archive);
    /// The same for \a characters of text that many elements keep.
    bool mayKeepText(qint64 characters, const veldmap::Tag &tag, const VMXMLArchive &archive);
    /// The same for a copy of the template \a element.
    bool mayCopyType(const VMXMLElement &element, const veldmap::Tag &tag, const VMXMLArchive &archive);

    veldmap::Callbacks m_callbacks;
    std::shared_ptr<veldmap::LoadBudget> m_budget; // shared by the loaders of one load
};
