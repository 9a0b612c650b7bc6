#pragma once

#include "findings/finding.h"
#include "model/variables.h"

#include <QHash>
#include <QList>

#include <functional>

class VMRootArchive;

namespace veldmap {

/// Finds the names of each table of variables and enums without walking it.
///
/// Owns nothing of the tree. What is appended to a table is found from the update() on that follows it; a table that
/// changes in another way makes a new index necessary. Finding is const and safe for several threads.
class ScopeIndex {
public:
    ScopeIndex() = default;
    /// Knows all tables that the expressions of \a root can see.
    explicit ScopeIndex(const VMRootArchive &root);

    /// Takes up what was appended to \a table since the last time.
    void update(const VMVariableManager &table);

    // Both know tables that were never updated as empty ones.

    /// The row of \a table that was added last under \a name, or null.
    const VMIntVar *findVariable(const VMVariableManager &table, const QString &name) const;
    /// The first enum of \a table of that name, or null.
    VMEnum *findEnum(const VMVariableManager &table, const QString &name) const;

    /// Where a name stands among all tables.
    struct Declared {
        const VMVariableManager *table = nullptr; ///< the first that has it
        bool isInSeveral = false;
    };
    Declared declaredVariable(const QString &name) const { return m_variables.value(name); }
    Declared declaredEnum(const QString &name) const { return m_enums.value(name); }

private:
    static void declare(Declared &declared, const VMVariableManager &table);

    struct Names {
        QHash<QString, qsizetype> lastRows;
        qsizetype rows = 0; // that lastRows covers
        QHash<QString, std::size_t> firstEnums;
        std::size_t enums = 0; // that firstEnums covers
    };
    QHash<const VMVariableManager *, Names> m_tables;
    QHash<QString, Declared> m_variables;
    QHash<QString, Declared> m_enums;
};

/// What the expressions of one archive see, in the order in which tables are searched. It holds as long as no archive
/// that can be reached from this one gets another include.
class Scope {
public:
    using Tables = QList<const VMVariableManager *>;

    /// The tables that \a archive sees, in the order in which they are searched for a variable.
    static Tables tablesOf(const VMXMLArchive &archive);

    /// \a index knows all of \a tables.
    Scope(const ScopeIndex &index, const Tables &tables) : m_index(&index), m_tables(tables) {}

    /// As VMVariableManager::getVisibleVariable.
    const VMIntVar *findVariable(const QString &name) const;

private:
    const ScopeIndex *m_index;
    Tables m_tables;
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
