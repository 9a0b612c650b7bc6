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

QHash<QString, std::optional<qint64>> declaredNames(const VMXMLArchive &archive)
{
    QHash<QString, std::optional<qint64>> names;
    for (const VMIntVar &variable : *archive.variables) {
        const QString name = variable.name.toUpper();
        if (!names.contains(name))
            names.insert(name, variable.isRange ? std::nullopt : std::optional<qint64>(variable.leftValue));
    }
    return names;
}

} // namespace

ChipPackages::ChipPackages(const VMRootArchive &root)
{
    QSet<QString> names;
    for (const VMXMLArchive *archive : root.xmlArchives) {
        const QString name = archive->getVHDLPkgName().toLower();
        if (names.contains(name))
            m_namesakes.insert(archive);
        names.insert(name);
        followIncludes(*archive);
    }
}

/// Finds circles as Tarjan does: what is still open when its first archive is left behind is one. The earliest open
/// archive that is reached from \a archive.
int ChipPackages::followIncludes(const VMXMLArchive &archive)
{
    if (const auto known = m_arrivals.constFind(&archive); known != m_arrivals.cend())
        return known->circle == 0 ? known->number : std::numeric_limits<int>::max();
    const int number = static_cast<int>(m_arrivals.size()) + 1;
    m_arrivals.insert(&archive, {number, 0});
    m_open.append(&archive);
    m_names.insert(&archive, declaredNames(archive));
    int lowest = number;
    for (const VMXMLArchive *used : archive.includedArchives)
        lowest = qMin(lowest, followIncludes(*used));
    if (lowest == number) {
        ++m_circles;
        const VMXMLArchive *member = nullptr;
        while (member != &archive) {
            member = m_open.takeLast();
            m_arrivals[member].circle = m_circles;
        }
    }
    return lowest;
}

bool ChipPackages::areCircular(const VMXMLArchive &one, const VMXMLArchive &other) const
{
    return m_arrivals.value(&one).circle == m_arrivals.value(&other).circle;
}

const QHash<QString, std::optional<qint64>> &ChipPackages::namesOf(const VMXMLArchive &archive) const
{
    const auto known = m_names.constFind(&archive);
    Q_ASSERT(known != m_names.cend());
    return *known;
}

PackageChecks::PackageChecks(const VMXMLArchive &archive, const ChipPackages &packages, QList<Finding> &findings)
    : m_archive(archive), m_packages(packages), m_findings(findings)
{
    const QString package = archive.getVHDLPkgName();
    if (packages.isNamesake(archive))
        findings.append(Finding(rules::vhdlPackageTaken, placeOf({package}), {package}));
    const auto isLegal = [](const QString &name) {
        return isDeclarableName(name) && name.compare("work"_L1, Qt::CaseInsensitive) != 0 &&
               name.compare("ieee"_L1, Qt::CaseInsensitive) != 0;
    };
    if (!isLegal(package)) {
        refuse(rules::vhdlIllegalName, {package}); // where the package begins
        refuse(rules::vhdlIllegalName, {package}); // and ends
    }
    for (const VMXMLArchive *used : archive.includedArchives) {
        const QString name = used->getVHDLPkgName();
        if (!isLegal(name))
            refuse(rules::vhdlIllegalName, {name});
        else if (packages.areCircular(archive, *used))
            refuse(rules::vhdlCircularUse, {name});
        if (!m_used.contains(used))
            m_used.append(used);
    }
}

/// A package is UTF-8; a tool of VHDL-93 reads its bytes as Latin-1 and takes none of the control characters behind it.
void PackageChecks::onComment(const VMIntVar &variable)
{
    const auto isControl = [](char byte) {
        return static_cast<unsigned char>(byte) >= 0x80 && static_cast<unsigned char>(byte) < 0xA0;
    };
    if (std::ranges::any_of(variable.comment.toUtf8(), isControl))
        refuse(rules::vhdlComment, {variable.name, nullptr, &variable});
}

void PackageChecks::onVariable(const VMIntVar &variable, const QString &name, const QString &value)
{
    const Where where = {name, nullptr, &variable};
    declare(where); // the name means nothing else from here on, not even in its own value
    checkExpression(value, where);
    if (!m_ownConstants.contains(name))
        m_ownConstants.insert(name, variable.leftValue);
}

void PackageChecks::onVariableRange(const VMIntVar &variable, const QString &left, const QString &right)
{
    const Where where = {variable.name, nullptr, &variable};
    declare(where);
    checkExpression(left, where);
    checkExpression(right, where);
}

void PackageChecks::onModule(const VMStruct &module, const QString &name, int addressBits)
{
    m_module = &module;
    const Where where = {name, &module};
    declare(where);
    if (addressBits < kLeastAddressBits || addressBits > kMostAddressBits)
        refuse(rules::vhdlAddressBits, where);
}

void PackageChecks::onConstant(const QString &name, const QString &value, const VMXMLElement &cause)
{
    checkExpression(value, {name, &cause});
    declare({name, &cause});
}

void PackageChecks::onRange(const QString &name, const QString &left, const QString &right, const VMXMLElement &cause)
{
    if (left.isEmpty()) {
        refuse(rules::vhdlNoFields, {{}, &cause});
        return;
    }
    checkExpression(left, {name, &cause});
    checkExpression(right, {name, &cause});
    declare({name, &cause});
}

void PackageChecks::onType(const QString &name, const QString &range, const VMXMLElement &cause)
{
    if (!m_declared.contains(range.toLower()))
        refuse(rules::vhdlNoFields, {{}, &cause});
    const auto isHidden = [this](const QString &word) {
        return m_declared.contains(word.toLower()) ||
               std::ranges::any_of(m_used, [&](const auto *used) { return m_packages.namesOf(*used).contains(word); });
    };
    if (isHidden(u"NATURAL"_s) || isHidden(u"STD_LOGIC_VECTOR"_s))
        refuse(rules::vhdlHiddenType, {name, &cause});
    declare({name, &cause});
}

void PackageChecks::onUnevaluated(const QString &name, const VMXMLElement &cause)
{
    refuse(rules::vhdlUnevaluated, {name, &cause});
}

void PackageChecks::report()
{
    const QString subject =
        m_module ? u"Module '%1'"_s.arg(m_module->getTypeString()) : u"Package '%1'"_s.arg(m_archive.getVHDLPkgName());
    for (std::size_t at = 0; at < m_refused.size(); ++at) {
        const Refused &refused = m_refused[at];
        if (refused.count > 0)
            m_findings.append(Finding(
                *rules::vhdlRefusals[at], refused.place,
                {subject, QString::number(refused.count), refused.count == 1 ? u"line"_s : u"lines"_s, refused.first}));
    }
    m_refused = {};
    m_module = nullptr;
}

void PackageChecks::refuse(const Rule &rule, const Where &where)
{
    const auto row = std::ranges::find(rules::vhdlRefusals, &rule);
    Refused &refused = m_refused[static_cast<std::size_t>(row - std::begin(rules::vhdlRefusals))];
    if (refused.count++ > 0)
        return;
    refused.place = placeOf(where);
    const bool hasPath = where.element && where.element != m_module;
    refused.first = hasPath ? pathOf(*where.element) : where.name;
    if (hasPath && !where.name.isEmpty())
        refused.first += ": "_L1 + where.name;
}

/// A line that is for nothing in particular stands for the archive's tag. What a host made has no tag.
Place PackageChecks::placeOf(const Where &where) const
{
    const SourcePlace &source = where.element    ? where.element->source
                                : where.variable ? where.variable->source
                                                 : m_archive.source;
    const Place place = source.place();
    return place.isNull() ? Place{m_archive.getTotalPath()} : place;
}

void PackageChecks::declare(const Where &where)
{
    const QString folded = where.name.toLower();
    if (!isDeclarableName(where.name))
        refuse(rules::vhdlIllegalName, where);
    else if (m_declared.contains(folded))
        refuse(rules::vhdlDeclaredTwice, where);
    m_declared.insert(folded);
}

void PackageChecks::checkExpression(const QString &text, const Where &where)
{
    switch (evaluateStatic(text, [this](const QString &name) { return valueOf(name); })) {
    case StaticResult::Value:
        break;
    case StaticResult::TooLarge:
        refuse(rules::vhdlTooLarge, where);
        break;
    case StaticResult::Unreadable:
        refuse(rules::vhdlUnreadable, where);
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

/// The module's name and the names from there on to the register; the prototype of an array stands for the array.
QString PackageChecks::pathOf(const VMXMLElement &element) const
{
    QStringList names;
    for (const VMXMLElement *at = &element; at && at != m_module; at = at->parent) {
        if (at->arrayNumber == -1 && at->getType() != VMXMLElement::XML_BITFIELD)
            names.prepend(at->getName());
    }
    if (m_module)
        names.prepend(m_module->getTypeString());
    return names.join(u'.');
}

} // namespace veldmap
