#pragma once

#include "findings/refusal.h"
#include "loading/shared_texts.h"
#include "loading/type_index.h"
#include "model/archive.h"
#include "model/bitfield.h"
#include "model/scope_index.h"

#include <QHash>

#include <memory>
#include <optional>
#include <utility>

class VMRootArchive;

namespace veldmap {

/// Puts what a reader of descriptions makes into the tree of one root: it hands each part to its owner, finds what was
/// declared before, and holds the limits against what makes much out of little.
///
/// Owns indexes alone. It knows the tree as it was at the first look and what it has added since; nobody else changes
/// the tree while it lives. It reports nothing: a Refusal has the words.
class TreeBuilder {
public:
    /// \a root may be null for archives that hang on none.
    explicit TreeBuilder(VMRootArchive *root) : m_root(root) {}
    TreeBuilder(const TreeBuilder &) = delete;
    TreeBuilder &operator=(const TreeBuilder &) = delete;

    /// A new archive, which the root owns and knows at once, so that an include of it from below finds it.
    VMXMLArchive &addArchive(const QString &relativeFile, const QString &basePath);
    /// \a archive has been read: it gets no more includes.
    void closeArchive(const VMXMLArchive &archive);
    /// Deletes \a archive, which failed to load.
    void discardArchive(VMXMLArchive &archive);
    /// The first archive with that identity, or null.
    VMXMLArchive *findArchive(const QString &basePath, const QString &relativeFile);
    /// \a archive sees what \a included declares from now on.
    void addInclude(VMXMLArchive &archive, VMXMLArchive &included);

    /// The template of that name in the archives of the root, or null.
    VMXMLElement *findType(const QString &name);
    /// Appends \a element to the templates of \a archive under \a name.
    VMXMLElement &addTemplate(VMXMLArchive &archive, std::unique_ptr<VMXMLElement> element, const QString &name);

    /// The value of \a expression in the scope of \a manager. A message of failure speaks of \a name, or of the
    /// expression where that is empty.
    Evaluated evaluate(const QString &expression, const VMVariableManager &manager, const QString &name = {});
    /// The enum of that name, as \a archive sees it, or null.
    const VMEnum *findEnum(const QString &name, const VMXMLArchive &archive);
    void addVariable(VMVariableManager &manager, const VMIntVar &variable);
    const VMEnum &addEnum(VMVariableManager &manager, std::unique_ptr<VMEnum> newEnum);
    /// The entries of \a linked as options, a list that all fields share which are linked to it.
    QList<VMBitFieldOption> optionsOf(const VMEnum &linked);
    /// The manager of the global variables, or, for an archive outside a memory map, its own.
    static VMVariableManager &globalManagerOf(VMXMLArchive &archive);

    /// From now on only the prototypes of arrays have the fields of their registers.
    void outlineArrays() { m_outlinesArrays = true; }

    /// The texts of this load, of which equal ones are one.
    SharedTexts &texts() { return m_texts; }

    // Arrays, instances and cut fields make much out of little: what they would hold is counted before it is made.

    /// Counts a file of \a bytes that is read: it allows for some copies. One that was read before, under another
    /// name, allows for none and counts as copies itself.
    void countFile(qint64 bytes);
    [[nodiscard]] Refusal countFileReadAgain(qint64 bytes);
    /// Refuses what entities make of the texts of many small files.
    [[nodiscard]] Refusal checkTexts() const;
    /// Counts one element that a tag declares, which allows for some copies where no file does.
    void countDeclared() { ++m_declaredElements; }
    /// Counts \a elements that are about to be made by copying.
    [[nodiscard]] Refusal countCopies(qint64 elements);
    /// Counts \a characters of text that is made of other text.
    [[nodiscard]] Refusal countText(qint64 characters);
    /// Counts a copy of the template \a element, which is about to be named \a name.
    [[nodiscard]] Refusal countCopyOf(const VMXMLElement &element, const QString &name);
    /// Puts an array of \a count elements in the place of \a element.
    [[nodiscard]] Refusal makeArray(std::unique_ptr<VMXMLElement> &element, const QString &name, int count,
                                    const QString &countExpression);

private:
    using Identity = std::pair<QString, QString>;

    void learnTree();
    void learnScopeOf(const VMXMLArchive &archive);
    const VMIntVar *findVariable(const VMXMLArchive &archive, const QString &name);
    qint64 copiesAllowed() const;

    VMRootArchive *m_root; // not owned
    bool m_outlinesArrays = false;
    bool m_knowsTree = false;
    QHash<const VMXMLArchive *, std::size_t> m_numbers; // of the root's archives, in the order of creation
    QHash<Identity, VMXMLArchive *> m_files;
    TypeIndex m_types;
    ScopeIndex m_names;
    SharedTexts m_texts;
    QHash<const VMEnum *, QList<VMBitFieldOption>> m_options; // of linked enums, which are complete
    const VMXMLArchive *m_scopeArchive = nullptr;             // whose scope m_foundVariables are in
    QHash<QString, const VMIntVar *> m_foundVariables;        // of names that many tables have
    qint64 m_fileBytes = 0;                                   // each file once
    qint64 m_readBytes = 0;
    qint64 m_declaredElements = 0;
    qint64 m_copiedElements = 0;
    qint64 m_madeCharacters = 0;
};

} // namespace veldmap
