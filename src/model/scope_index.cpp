#include "model/scope_index.h"

#include "model/archive.h"
#include "model/include_walk.h"
#include "model/memory_map.h"
#include "model/root_archive.h"

namespace veldmap {

ScopeIndex::ScopeIndex(const VMRootArchive &root)
{
    for (const VMXMLArchive *archive : root.xmlArchives)
        update(*archive->variables);
    if (root.memoryMap)
        update(*root.memoryMap->globalVariables);
}

void ScopeIndex::update(const VMVariableManager &table)
{
    Names &names = m_tables[&table];
    for (; names.rows < table.size(); ++names.rows) {
        const QString &name = table.at(names.rows).name;
        names.lastRows.insert(name, names.rows);
        declare(m_variables[name], table);
    }
    for (; names.enums < table.enums.size(); ++names.enums) {
        const QString &name = table.enums[names.enums]->name;
        if (!names.firstEnums.contains(name))
            names.firstEnums.insert(name, names.enums);
        declare(m_enums[name], table);
    }
}

void ScopeIndex::declare(Declared &declared, const VMVariableManager &table)
{
    if (!declared.table)
        declared.table = &table;
    declared.isInSeveral = declared.isInSeveral || declared.table != &table;
}

const VMIntVar *ScopeIndex::findVariable(const VMVariableManager &table, const QString &name) const
{
    const auto names = m_tables.constFind(&table);
    if (names == m_tables.cend())
        return nullptr;
    const auto row = names->lastRows.constFind(name);
    return row == names->lastRows.cend() ? nullptr : &table.at(*row);
}

VMEnum *ScopeIndex::findEnum(const VMVariableManager &table, const QString &name) const
{
    const auto names = m_tables.constFind(&table);
    if (names == m_tables.cend())
        return nullptr;
    const auto number = names->firstEnums.constFind(name);
    return number == names->firstEnums.cend() ? nullptr : table.enums[*number].get();
}

Scope::Tables Scope::tablesOf(const VMXMLArchive &archive)
{
    Tables tables;
    if (const VMVariableManager *globals = globalVariablesOf(archive))
        tables += globals;
    // A table that was searched in vain would be so again.
    QSet<const VMXMLArchive *> listed;
    walkIncludes(archive, true, [&](const VMXMLArchive &included) {
        if (!listed.contains(&included)) {
            listed.insert(&included);
            tables += included.variables.get();
        }
        return false;
    });
    return tables;
}

const VMIntVar *Scope::findVariable(const QString &name) const
{
    for (const VMVariableManager *table : m_tables) {
        if (const VMIntVar *variable = m_index->findVariable(*table, name))
            return variable;
    }
    return nullptr;
}

} // namespace veldmap
