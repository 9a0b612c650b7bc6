#include "vhdl/package_checks.h"

#include "model/aggregates.h"
#include "model/archive.h"
#include "model/root_archive.h"
#include "vhdl/notation.h"
#include "vhdl/static_expression.h"

#include <algorithm>
#include <limits>

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
    "types whose words another declaration hides"_L1,
    "uses of packages that use this one"_L1,
    "comments with characters that VHDL-93 lacks"_L1,
};

} // namespace

ChipPackages::ChipPackages(const VMRootArchive &root)
{
    QSet<QString> names;
    for (const VMXMLArchive *archive : root.xmlArchives) {
        const QString name = archive->getVHDLPkgName().toLower();
        if (names.contains(name))
            m_namesakes.insert(archive);
        names.insert(name);
        visit(*archive);
    }
}

/// Finds circles as Tarjan does: what is still open when its first archive is left behind is one. The earliest open
/// archive that is reached from \a archive.
int ChipPackages::visit(const VMXMLArchive &archive)
{
    if (const auto known = m_visits.constFind(&archive); known != m_visits.cend())
        return known->circle == 0 ? known->number : std::numeric_limits<int>::max();
    const int number = static_cast<int>(m_visits.size()) + 1;
    m_visits.insert(&archive, {number, 0});
    m_open.append(&archive);
    int lowest = number;
    for (const VMXMLArchive *used : archive.includedArchives)
        lowest = qMin(lowest, visit(*used));
    if (lowest == number) {
        ++m_circles;
        const VMXMLArchive *member = nullptr;
        while (member != &archive) {
            member = m_open.takeLast();
            m_visits[member].circle = m_circles;
        }
    }
    return lowest;
}

bool ChipPackages::areCircular(const VMXMLArchive &one, const VMXMLArchive &other) const
{
    return m_visits.value(&one).circle == m_visits.value(&other).circle;
}

const QHash<QString, std::optional<qint64>> &ChipPackages::namesOf(const VMXMLArchive &archive)
{
    const auto known = m_names.constFind(&archive);
    if (known != m_names.cend())
        return *known;
    QHash<QString, std::optional<qint64>> names;
    for (const VMIntVar &variable : *archive.variables) {
        const QString name = variable.name.toUpper();
        if (!names.contains(name))
            names.insert(name, variable.isRange ? std::nullopt : std::optional<qint64>(variable.leftValue));
    }
    return *m_names.insert(&archive, names);
}

PackageChecks::PackageChecks(const VMXMLArchive &archive, ChipPackages &packages, QList<VhdlFinding> &findings)
    : m_archive(archive), m_packages(packages), m_findings(findings)
{
    const QString package = archive.getVHDLPkgName();
    if (packages.isNamesake(archive))
        findings.append(
            {archive.getTotalPath(),
             u"Package '%1': another file of the chip has a package of this name, and a library holds one"_s.arg(
                 package)});
    const auto isLegal = [](const QString &name) {
        return isDeclarableName(name) && name.compare("work"_L1, Qt::CaseInsensitive) != 0 &&
               name.compare("ieee"_L1, Qt::CaseInsensitive) != 0;
    };
    if (!isLegal(package)) {
        find(kIllegalName, {package}); // where the package begins
        find(kIllegalName, {package}); // and ends
    }
    for (const VMXMLArchive *used : archive.includedArchives) {
        const QString name = used->getVHDLPkgName();
        if (!isLegal(name))
            find(kIllegalName, {name});
        else if (packages.areCircular(archive, *used))
            find(kCircularUse, {name});
        if (!m_used.contains(used))
            m_used.append(used);
    }
}

/// A package is UTF-8; a tool of VHDL-93 reads its bytes as Latin-1 and takes none of the control characters behind it.
void PackageChecks::onComment(const QString &name, const QString &comment)
{
    const auto isControl = [](char byte) {
        return static_cast<unsigned char>(byte) >= 0x80 && static_cast<unsigned char>(byte) < 0xA0;
    };
    if (std::ranges::any_of(comment.toUtf8(), isControl))
        find(kComment, {name});
}

void PackageChecks::onVariable(const QString &name, const QString &value, int number)
{
    declare({name}); // the name means nothing else from here on, not even in its own value
    checkExpression(value, {name});
    if (!m_ownConstants.contains(name))
        m_ownConstants.insert(name, number);
}

void PackageChecks::onVariableRange(const QString &name, const QString &left, const QString &right)
{
    declare({name});
    checkExpression(left, {name});
    checkExpression(right, {name});
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
    const auto isHidden = [this](const QString &word) {
        return m_declared.contains(word.toLower()) ||
               std::ranges::any_of(m_used, [&](const auto *used) { return m_packages.namesOf(*used).contains(word); });
    };
    if (isHidden(u"NATURAL"_s) || isHidden(u"STD_LOGIC_VECTOR"_s))
        find(kHiddenType, {name, &cause});
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

std::optional<qint64> PackageChecks::valueOf(const QString &name)
{
    if (m_declared.contains(name.toLower())) {
        const auto own = m_ownConstants.constFind(name);
        return own == m_ownConstants.cend() ? std::nullopt : std::optional<qint64>(*own);
    }
    const auto known = m_usedConstants.constFind(name);
    return known != m_usedConstants.cend() ? *known : *m_usedConstants.insert(name, lookUp(name));
}

/// The constant of that name in the packages that this one uses. A name that two packages declare is that of neither,
/// also if one of them is a package that all use.
std::optional<qint64> PackageChecks::lookUp(const QString &name) const
{
    if (isStandardName(name))
        return std::nullopt;
    std::optional<qint64> value;
    bool isFound = false;
    for (const VMXMLArchive *used : m_used) {
        const auto &names = m_packages.namesOf(*used);
        const auto found = names.constFind(name);
        if (found == names.cend())
            continue;
        if (isFound)
            return std::nullopt;
        isFound = true;
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
