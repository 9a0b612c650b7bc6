#pragma once

#include <veldmap/model/element.h>
#include <veldmap/model/variables.h>

#include <QList>

#include <memory>
#include <vector>

class VMRootArchive;

/// One alternative of a conditional include.
struct VELDMAP_EXPORT VMXMLIncludeCondition {
    QString headerName;
    QString condition;                ///< as written
    veldmap::SourcePlace source = {}; ///< its tag
};

/// One include as the description wrote it, so that a header can repeat the choice for the C preprocessor.
struct VELDMAP_EXPORT VMXMLInclude {
    QString headerName; ///< the header of the unconditional or default file
    QString comment;
    QList<VMXMLIncludeCondition> conditions; ///< in document order
    veldmap::SourcePlace source = {};        ///< its tag
};

/// The templates of an archive, in load order. Owns them. The list is open to a host: lookups walk it.
class VELDMAP_EXPORT VMTemplateManager : public std::vector<std::unique_ptr<VMXMLElement>> {
public:
    explicit VMTemplateManager(VMXMLArchive *archive);

    /// Appends \a element under the type name \a name and takes ownership of it. Its parent is the archive already.
    void addTemplate(VMXMLElement *element, const QString &name);
};

/// One loaded description file: its templates, variables and enums, its includes and its names.
///
/// Owns the variable manager and the templates; the root archive owns the archive. Text: headers/header_texts.cpp.
class VELDMAP_EXPORT VMXMLArchive : public VMXMLElement {
public:
    /// The caller hands the archive to addXMLArchive() of \a root.
    explicit VMXMLArchive(VMRootArchive *root);
    VMXMLArchive(const VMXMLArchive &) = delete;
    ~VMXMLArchive() override;

    static bool matches(const VMXMLElement &element) { return element.getType() == XML_ARCHIVE; }

    int sizeOf() const override;
    int getAlignConstraint() const override;
    const QString &getComment() const override;
    QString getTypeString() const override;
    /// The whole C header.
    QString c_content() const override;
    /// The whole assembly header.
    QString asm_content() const override;
    int dumpInfo(int level) const override;

    /// The first template of this archive whose type word or typedef name is \a typeName, or null.
    VMXMLElement *contains(const QString &typeName) const;
    /// The variables that expressions of this archive see, of which a later one of a name wins: the own table, the
    /// same list of each included archive, the global table. An archive that is on the way in already adds nothing.
    /// Where archives are included along very many ways, only the last copy of each table stands in the list. Text:
    /// model/variables.cpp.
    QList<VMIntVar> getAllIncludedVariables() const;
    /// The banner of the C header.
    QString c_header() const;

    // File names, all from the relative file name: sub/uart.xml gives sub/uart.h, sub/uart_asm.h, sub/uart_reg_pkg.vhd.

    QString getTotalPath() const;
    /// The relative file name, or with \a withFile false its directory, empty for a file directly in the base path.
    QString getRelativePath(bool withFile) const;
    /// The file name up to its first dot.
    QString getBaseName() const;
    QString getHFileRelativeName() const;
    QString getASMFileRelativeName() const;
    QString getVHDLFileRelativeName() const;
    QString getVHDLPkgName() const;

    std::unique_ptr<VMVariableManager> variables;
    VMTemplateManager templates;
    QString relativeFileName; ///< relative to basePath
    QString basePath;
    QList<VMXMLArchive *> includedArchives; ///< in the order in which they finished loading; not owned
    QList<VMXMLInclude> includes;           ///< in document order
    QString archiveComment;
    QString cJoker;           ///< C text for the tail of the header
    bool generateAsm = false; ///< an assembly header is written too
    QString vhdlPackage;      ///< the package's name where the description gives one

private:
    /// \a fileName below the archive's own directory.
    QString besideDescription(const QString &fileName) const;
};
