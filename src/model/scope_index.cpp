#include "model/scope_index.h"

#include "model/archive.h"
#include "model/include_walk.h"
#include "model/memory_map.h"
#include "model/root_archive.h"

#include <mutex>

namespace veldmap {

void NameTables::add(const QString &name, const VMVariableManager &table, qsizetype row)
{
    Tables &tables = m_names[name];
    if (!tables.first) {
        tables.first = &table;
        tables.row = row;
    } else if (tables.first == &table) {
        if (m_wins == Wins::Last)
            tables.row = row;
    } else if (const auto other = m_otherRows.find({&table, name}); other == m_otherRows.end()) {
        m_otherRows.insert({&table, name}, row);
        tables.others.push_back(&table);
    } else if (m_wins == Wins::Last) {
        *other = row;
    }
}

qsizetype NameTables::rowOf(const QString &name, const VMVariableManager &table) const
{
    const Tables &tables = tablesOf(name);
    if (tables.first == &table)
        return tables.row;
    return tables.others.empty() ? -1 : m_otherRows.value({&table, name}, -1);
}

const NameTables::Tables &NameTables::tablesOf(const QString &name) const
{
    static const Tables none;
    const auto tables = m_names.constFind(name);
    return tables == m_names.cend() ? none : *tables;
}

/// The names of variables or those of enums.
struct ScopeIndex::Names {
    NameTables tables;
    bool lastFirst; ///< the order in which includes are searched

    // What walks have come to from archives on which nothing can change any more; null where a name is not in sight.
    mutable std::mutex mutex;
    mutable QHash<std::pair<const VMXMLArchive *, QString>, const VMVariableManager *> found;

    bool isFound(const VMXMLArchive &archive, const QString &name, const VMVariableManager *&table) const
    {
        const auto known = found.constFind({&archive, name});
        if (known != found.cend())
            table = *known;
        return known != found.cend();
    }
};

namespace {

/// Tells \a index of the archive \a top and of all that it includes and that was not told before.
void addWithIncludes(ScopeIndex &index, const VMXMLArchive &top)
{
    struct Step {
        const VMXMLArchive *archive;
        qsizetype taken = 0;
    };
    index.addArchive(top);
    std::vector<Step> way = {{&top}};
    while (!way.empty()) {
        Step &step = way.back();
        const VMXMLArchive &archive = *step.archive;
        if (step.taken == archive.includedArchives.size()) {
            index.closeArchive(archive);
            way.pop_back();
            if (!way.empty())
                index.addInclude(*way.back().archive, archive);
            continue;
        }
        const VMXMLArchive &next = *archive.includedArchives[step.taken];
        ++step.taken;
        if (index.isKnown(next)) {
            index.addInclude(archive, next);
        } else {
            index.addArchive(next);
            way.push_back({&next});
        }
    }
}

} // namespace

ScopeIndex::ScopeIndex()
    : m_variables(new Names{NameTables(NameTables::Wins::Last), true, {}, {}}),
      m_enums(new Names{NameTables(NameTables::Wins::First), false, {}, {}})
{
}

ScopeIndex::ScopeIndex(ScopeIndex &&other) noexcept = default;
ScopeIndex &ScopeIndex::operator=(ScopeIndex &&other) noexcept = default;
ScopeIndex::~ScopeIndex() = default;

ScopeIndex::ScopeIndex(const VMRootArchive &root) : ScopeIndex()
{
    for (const VMXMLArchive *archive : root.xmlArchives) {
        update(*archive->variables);
        if (!isKnown(*archive))
            addWithIncludes(*this, *archive);
    }
    if (root.memoryMap)
        update(*root.memoryMap->globalVariables);
}

void ScopeIndex::update(const VMVariableManager &table)
{
    Taken &taken = m_taken[&table];
    if (taken.variables == table.size() && taken.enums == table.enums.size())
        return;
    for (; taken.variables < table.size(); ++taken.variables)
        m_variables->tables.add(table.at(taken.variables).name, table, taken.variables);
    for (; taken.enums < table.enums.size(); ++taken.enums)
        m_enums->tables.add(table.enums[taken.enums]->name, table, static_cast<qsizetype>(taken.enums));
    if (table.archive && isFinal(*table.archive)) { // as only a host adds to it
        m_variables->found.clear();
        m_enums->found.clear();
    }
}

void ScopeIndex::addArchive(const VMXMLArchive &archive)
{
    const auto number = static_cast<std::size_t>(m_numbers.size());
    m_numbers.insert(&archive, number);
    m_visibility.add(number);
}

void ScopeIndex::closeArchive(const VMXMLArchive &archive)
{
    const auto number = m_numbers.constFind(&archive);
    if (number != m_numbers.cend())
        m_visibility.close(*number);
}

void ScopeIndex::addInclude(const VMXMLArchive &archive, const VMXMLArchive &included)
{
    const auto nobody = static_cast<std::size_t>(m_numbers.size());
    m_visibility.addInclude(m_numbers.value(&archive, nobody), m_numbers.value(&included, nobody));
}

bool ScopeIndex::isKnown(const VMXMLArchive &archive) const
{
    const auto number = m_numbers.constFind(&archive);
    return number != m_numbers.cend() && m_visibility.isKnown(*number);
}

/// Whether \a archive, which is known, sees \a table, its own or another one's.
bool ScopeIndex::sees(const VMXMLArchive &archive, const VMVariableManager &table) const
{
    if (&table == archive.variables.get())
        return true;
    const auto other = table.archive ? m_numbers.constFind(table.archive) : m_numbers.cend();
    return other != m_numbers.cend() && m_visibility.sees(m_numbers.value(&archive), *other);
}

/// Whether what \a archive sees will stay as it is, and no walk that comes to it can have come from there.
bool ScopeIndex::isFinal(const VMXMLArchive &archive) const
{
    const auto number = m_numbers.constFind(&archive);
    return number != m_numbers.cend() && m_visibility.isKnown(*number) && m_visibility.isFinal(*number);
}

/// The table in which \a archive finds \a name, or null. Nearly always one of the few that have the name is in sight.
const VMVariableManager *ScopeIndex::tableOf(const Names &names, const VMXMLArchive &archive, const QString &name) const
{
    const NameTables::Tables &tables = names.tables.tablesOf(name);
    if (!tables.first)
        return nullptr;
    if (!isKnown(archive) || names.tables.areMany(name))
        return walk(names, archive, name);
    const VMVariableManager *seen = sees(archive, *tables.first) ? tables.first : nullptr;
    for (const VMVariableManager *other : tables.others) {
        if (!sees(archive, *other))
            continue;
        if (seen)
            return walk(names, archive, name);
        seen = other;
    }
    return seen;
}

/// The first table with \a name on the way of walkIncludes(). What a walk comes to from an include is kept, since the
/// next archive is likely to include it too, or an archive that does.
const VMVariableManager *ScopeIndex::walk(const Names &names, const VMXMLArchive &archive, const QString &name) const
{
    struct Step {
        const VMXMLArchive *archive;
        qsizetype taken = 0;
    };
    const std::lock_guard lock(names.mutex);
    QSet<const VMXMLArchive *> walked = {&archive};
    std::vector<Step> way = {{&archive}};
    const auto keep = [&](const VMVariableManager *found) {
        if (way.size() > 1 && isFinal(*way[1].archive))
            names.found.insert({way[1].archive, name}, found);
        return found;
    };
    while (!way.empty()) {
        Step &step = way.back();
        const auto &includes = step.archive->includedArchives;
        if (step.taken == includes.size()) {
            if (names.tables.rowOf(name, *step.archive->variables) >= 0)
                return keep(step.archive->variables.get());
            if (way.size() == 2)
                keep(nullptr);
            way.pop_back();
            continue;
        }
        const VMXMLArchive *next = includes[names.lastFirst ? includes.size() - 1 - step.taken : step.taken];
        ++step.taken;
        if (walked.contains(next))
            continue;
        walked.insert(next);
        const VMVariableManager *found = nullptr;
        if (!names.isFound(*next, name, found))
            way.push_back({next});
        else if (found)
            return keep(found);
    }
    return nullptr;
}

const VMIntVar *ScopeIndex::findVariable(const VMXMLArchive &archive, const QString &name) const
{
    const VMVariableManager *globals = globalVariablesOf(archive);
    if (const VMIntVar *global = globals ? findIn(*globals, name) : nullptr)
        return global;
    const VMVariableManager *table = tableOf(*m_variables, archive, name);
    return table ? findIn(*table, name) : nullptr;
}

const VMEnum *ScopeIndex::findEnum(const VMXMLArchive &archive, const QString &name) const
{
    const VMVariableManager *table = tableOf(*m_enums, archive, name);
    return table ? table->enums[static_cast<std::size_t>(m_enums->tables.rowOf(name, *table))].get() : nullptr;
}

const VMIntVar *ScopeIndex::findIn(const VMVariableManager &table, const QString &name) const
{
    const qsizetype row = m_variables->tables.rowOf(name, table);
    return row < 0 ? nullptr : &table.at(row);
}

bool ScopeIndex::isVariableOfMany(const QString &name) const
{
    return m_variables->tables.areMany(name);
}

} // namespace veldmap
