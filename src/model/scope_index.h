#pragma once

#include "findings/finding.h"
#include "model/variables.h"
#include "model/visibility.h"
#include <veldmap/veldmap_export.h>

#include <QHash>

#include <functional>
#include <memory>

class VMRootArchive;

namespace veldmap {

/// Which names stand in which tables, and in which row of each.
///
/// Nearly every name stands in one table; only the others take room of their own.
class NameTables {
public:
    enum class Wins { First, Last };
    /// Of several rows of a table with one name the first is found or the last.
    explicit NameTables(Wins wins) : m_wins(wins) {}

    void add(const QString &name, const VMVariableManager &table, qsizetype row);
    /// The row of \a name in \a table, -1 where there is none.
    qsizetype rowOf(const QString &name, const VMVariableManager &table) const;

    /// The tables that have a name.
    struct Tables {
        const VMVariableManager *first = nullptr; ///< null for a name that none has
        qsizetype row = 0;                        ///< in it
        std::vector<const VMVariableManager *> others;
    };
    const Tables &tablesOf(const QString &name) const;
    /// Whether so many have \a name that who asks which of them is in sight had better walk the includes.
    bool areMany(const QString &name) const { return tablesOf(name).others.size() > kFew; }

private:
    static constexpr std::size_t kFew = 16;

    Wins m_wins;
    QHash<QString, Tables> m_names;
    QHash<std::pair<const VMVariableManager *, QString>, qsizetype> m_otherRows;
};

/// Finds the names of the tables of variables and enums without walking them, and which of them an archive sees,
/// mostly without walking its includes.
///
/// Owns nothing of the tree. What is appended to a table is found from the update() on that follows it; a table that
/// changes in another way makes a new index necessary. Finding is const and safe for several threads.
class VELDMAP_EXPORT ScopeIndex {
public:
    ScopeIndex();
    ScopeIndex(ScopeIndex &&other) noexcept;
    ScopeIndex &operator=(ScopeIndex &&other) noexcept;
    ~ScopeIndex();
    /// Knows all archives of \a root, with the tables that their expressions can see.
    explicit ScopeIndex(const VMRootArchive &root);

    /// Takes up what was appended to \a table since the last time.
    void update(const VMVariableManager &table);

    // The archives of a root have to be told as Visibility says. Of others only what they find is slower.

    void addArchive(const VMXMLArchive &archive);
    void closeArchive(const VMXMLArchive &archive);
    void addInclude(const VMXMLArchive &archive, const VMXMLArchive &included);
    /// Whether the includes of \a archive are known.
    bool isKnown(const VMXMLArchive &archive) const;

    // What an archive sees are the global variables, its own table and those of its includes in whatever way. Tables
    // that were never updated are taken for empty ones.

    /// As VMVariableManager::getVisibleVariable.
    const VMIntVar *findVariable(const VMXMLArchive &archive, const QString &name) const;
    /// As VMVariableManager::getEnumByName.
    const VMEnum *findEnum(const VMXMLArchive &archive, const QString &name) const;
    /// Whether findVariable() walks the includes for \a name, so that what it found is worth keeping.
    bool isVariableOfMany(const QString &name) const;
    /// The row of \a table that was added last under \a name, or null.
    const VMIntVar *findIn(const VMVariableManager &table, const QString &name) const;

private:
    struct Taken {
        qsizetype variables = 0;
        std::size_t enums = 0;
    };
    bool sees(const VMXMLArchive &archive, const VMVariableManager &table) const;
    struct Names;
    bool isFinal(const VMXMLArchive &archive) const;
    const VMVariableManager *tableOf(const Names &names, const VMXMLArchive &archive, const QString &name) const;
    const VMVariableManager *walk(const Names &names, const VMXMLArchive &archive, const QString &name) const;

    QHash<const VMVariableManager *, Taken> m_taken; // how much of each table is known
    std::unique_ptr<Names> m_variables;
    std::unique_ptr<Names> m_enums;
    QHash<const VMXMLArchive *, std::size_t> m_numbers;
    Visibility m_visibility;
};

/// What an expression has come to.
struct Evaluated {
    int value = -1;
    bool failed = false;
    QString message;       ///< on failure
    QString reason;        ///< what is wrong and where, in words for a line below the message
    WrongExpression wrong; ///< on failure the expression
};

/// Looks up the variable of a name, or null.
using FindVariable = std::function<const VMIntVar *(const QString &name)>;

/// The value of \a expression as VMVariableManager::evalExpression gives it, with names as \a find gives them. \a name
/// stands in the message; where it is empty, the expression does.
Evaluated evaluateExpression(const QString &expression, const FindVariable &find, const QString &name = {});

} // namespace veldmap
