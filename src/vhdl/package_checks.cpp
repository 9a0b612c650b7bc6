#include "vhdl/package_checks.h"

#include "model/aggregates.h"
#include "model/archive.h"
#include "vhdl/notation.h"
#include "vhdl/static_expression.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr int kLeastAddressBits = 1;
constexpr int kMostAddressBits = 12;

/// What the refused lines of each kind are, in the order of the kinds.
constexpr QLatin1StringView kWordings[] = {
    "ranges of registers without bitfields"_L1,
    "names that are declared already"_L1,
    "names that are reserved or no identifiers"_L1,
    "_REG_NBA outside 1 to 12"_L1,
    "numbers beyond its integers"_L1,
    "expressions that it can't read"_L1,
    "positions that have no value"_L1,
};

} // namespace

const QHash<QString, qint64> &PackageConstants::of(const VMXMLArchive &archive)
{
    const auto known = m_tables.constFind(&archive);
    if (known != m_tables.cend())
        return *known;
    QHash<QString, qint64> table;
    for (const VMIntVar &variable : *archive.variables) {
        const QString name = variable.name.toUpper();
        if (!variable.isRange && !table.contains(name))
            table.insert(name, variable.leftValue);
    }
    return *m_tables.insert(&archive, table);
}

PackageChecks::PackageChecks(const VMXMLArchive &archive, PackageConstants &constants, QList<VhdlFinding> &findings)
    : m_archive(archive), m_constants(constants), m_findings(findings)
{
    const QString package = archive.getVHDLPkgName();
    if (!isDeclarableName(package))
        find(kIllegalName, {package});
}

void PackageChecks::onVariable(const QString &name, const QString &value, int number)
{
    checkExpression(value, {name});
    declare({name});
    if (!m_ownConstants.contains(name))
        m_ownConstants.insert(name, number);
}

void PackageChecks::onVariableRange(const QString &name, const QString &left, const QString &right)
{
    checkExpression(left, {name});
    checkExpression(right, {name});
    declare({name});
}

void PackageChecks::onModule(const VMStruct &module, const QString &name, int addressBits)
{
    m_module = &module;
    declare({name});
    if (addressBits < kLeastAddressBits || addressBits > kMostAddressBits)
        find(kAddressBits, {name});
}

void PackageChecks::onConstant(const QString &name, const QString &value, const VMXMLElement &cause)
{
    checkExpression(value, {name, &cause});
    declare({name, &cause});
}

void PackageChecks::onRange(const QString &name, const QString &left, const QString &right, const VMXMLElement &cause)
{
    if (left.isEmpty()) {
        find(kNoFields, {{}, &cause});
        return;
    }
    checkExpression(left, {name, &cause});
    checkExpression(right, {name, &cause});
    declare({name, &cause});
}

void PackageChecks::onType(const QString &name, const QString &range, const VMXMLElement &cause)
{
    if (!m_declared.contains(range.toLower()))
        find(kNoFields, {{}, &cause});
    declare({name, &cause});
}

void PackageChecks::onUnevaluated(const QString &name, const VMXMLElement &cause)
{
    find(kUnevaluated, {name, &cause});
}

void PackageChecks::report()
{
    const QString subject =
        m_module ? u"Module '%1'"_s.arg(m_module->getTypeString()) : u"Package '%1'"_s.arg(m_archive.getVHDLPkgName());
    for (int kind = 0; kind < kKinds; ++kind) {
        const Found &found = m_found[static_cast<std::size_t>(kind)];
        if (found.count > 0)
            m_findings.append({m_archive.getTotalPath(),
                               u"%1: VHDL refuses %2 %3, %4; the first is %5"_s.arg(
                                   subject, QString::number(found.count), found.count == 1 ? u"line"_s : u"lines"_s,
                                   kWordings[kind], found.first)});
    }
    m_found = {};
    m_module = nullptr;
}

void PackageChecks::find(Kind kind, const Where &where)
{
    Found &found = m_found[kind];
    if (found.count++ > 0)
        return;
    found.first = where.cause ? pathOf(*where.cause) : where.name;
    if (where.cause && !where.name.isEmpty())
        found.first += ": "_L1 + where.name;
}

void PackageChecks::declare(const Where &where)
{
    const QString folded = where.name.toLower();
    if (!isDeclarableName(where.name))
        find(kIllegalName, where);
    else if (m_declared.contains(folded))
        find(kDeclaredTwice, where);
    m_declared.insert(folded);
}

void PackageChecks::checkExpression(const QString &text, const Where &where)
{
    switch (evaluateStatic(text, [this](const QString &name) { return valueOf(name); })) {
    case StaticResult::Value:
        break;
    case StaticResult::TooLarge:
        find(kTooLarge, where);
        break;
    case StaticResult::Unreadable:
        find(kUnreadable, where);
        break;
    }
}

/// A name that two included packages declare is that of neither.
std::optional<qint64> PackageChecks::valueOf(const QString &name) const
{
    const auto own = m_ownConstants.constFind(name);
    if (own != m_ownConstants.cend())
        return *own;
    std::optional<qint64> value;
    for (const VMXMLArchive *included : m_archive.includedArchives) {
        const QHash<QString, qint64> &constants = m_constants.of(*included);
        const auto found = constants.constFind(name);
        if (found == constants.cend())
            continue;
        if (value)
            return std::nullopt;
        value = *found;
    }
    return value;
}

/// The module's name and the names from there on; the prototype of an array stands for the array.
QString PackageChecks::pathOf(const VMXMLElement &element) const
{
    QStringList names;
    for (const VMXMLElement *at = &element; at && at != m_module; at = at->parent) {
        if (at->arrayNumber == -1)
            names.prepend(at->getName());
    }
    if (m_module)
        names.prepend(m_module->getTypeString());
    return names.join(u'.');
}

} // namespace veldmap
