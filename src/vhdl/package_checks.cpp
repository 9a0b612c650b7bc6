#include "vhdl/package_checks.h"

#include "model/aggregates.h"
#include "model/archive.h"
#include "model/root_archive.h"
#include "vhdl/comments.h"
#include "vhdl/notation.h"
#include "vhdl/static_expression.h"

#include <algorithm>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr int kLeastAddressBits = 1;
constexpr int kMostAddressBits = 12;

bool isLegalPackage(const QString &name)
{
    return isDeclarableName(name) && name.compare("work"_L1, Qt::CaseInsensitive) != 0 &&
           name.compare("ieee"_L1, Qt::CaseInsensitive) != 0;
}

PackageNames declaredNames(const VMXMLArchive &archive)
{
    PackageNames names;
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
    while (names.contains(m_standIn))
        m_standIn += "_2"_L1;
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
    m_variables.insert(&archive, declaredNames(archive));
    int lowest = number;
    for (const VMXMLArchive *used : archive.includedArchives)
        lowest = qMin(lowest, followIncludes(*used));
    m_order.append(&archive);
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

const PackageNames &ChipPackages::namesOf(const VMXMLArchive &archive) const
{
    const auto known = m_names.constFind(&archive);
    return known == m_names.cend() ? variablesOf(archive) : *known;
}

const PackageNames &ChipPackages::variablesOf(const VMXMLArchive &archive) const
{
    const auto known = m_variables.constFind(&archive);
    Q_ASSERT(known != m_variables.cend());
    return *known;
}

const QSet<QString> &ChipPackages::refusedNamesOf(const VMXMLArchive &archive) const
{
    static const QSet<QString> none;
    const auto known = m_refusedNames.constFind(&archive);
    return known == m_refusedNames.cend() ? none : *known;
}

void ChipPackages::setNames(const VMXMLArchive &archive, PackageNames names, QSet<QString> refused)
{
    m_names.insert(&archive, std::move(names));
    m_refusedNames.insert(&archive, std::move(refused));
}

PackageChecks::PackageChecks(const VMXMLArchive &archive, const ChipPackages &packages, RefusedLines refusedLines,
                             QList<Finding> &findings)
    : m_archive(archive), m_packages(packages), m_refusedLines(refusedLines), m_findings(findings)
{
    const QString package = archive.getVHDLPkgName();
    if (packages.isNamesake(archive)) {
        findings.append(Finding(rules::vhdlPackageTaken, placeOf({package}), {package}));
        m_wholeReason = u"another package of the chip has this name"_s;
    }
    if (!isLegalPackage(package)) {
        refuse(rules::vhdlIllegalName, {package}); // where the package begins
        refuse(rules::vhdlIllegalName, {package}); // and ends
        m_wholeReason = u"the package's name is reserved or no identifier"_s;
    }
}

QString PackageChecks::onUse(const VMXMLArchive &used)
{
    const QString name = used.getVHDLPkgName();
    const Where where = {name};
    begin(where);
    if (!isLegalPackage(name)) {
        refuse(rules::vhdlIllegalName, where);
    } else if (m_packages.areCircular(m_archive, used)) {
        refuse(rules::vhdlCircularUse, where);
    } else if (makesComments() && m_packages.isNamesake(used)) {
        m_goneName = name;
        refuse(rules::vhdlDependent, where);
    }
    auto &uses = makesComments() && m_refusal ? m_refusedUses : m_used;
    if (!uses.contains(&used))
        uses.append(&used);
    m_refusedCount += m_refusal ? 1 : 0;
    return reason();
}

QString PackageChecks::onComment(const VMIntVar &variable)
{
    const Where where = {variable.name, nullptr, &variable};
    begin(where);
    if (!isPlainComment(variable.comment))
        refuse(rules::vhdlComment, where);
    return reason();
}

QString PackageChecks::onVariable(const VMIntVar &variable, const QString &name, const QString &value)
{
    const Where where = {name, nullptr, &variable};
    begin(where);
    declare(where); // the name means nothing else from here on, not even in its own value
    checkExpression({value, variable.leftValue}, where);
    if (!m_refusal || (!makesComments() && !m_ownConstants.contains(name)))
        m_ownConstants.insert(name, variable.leftValue);
    return end(where, {name, false, false, variable.leftValue});
}

QString PackageChecks::onVariableRange(const VMIntVar &variable, const QString &left, const QString &right)
{
    const Where where = {variable.name, nullptr, &variable};
    begin(where);
    declare(where);
    checkExpression({left, variable.leftValue}, where);
    checkExpression({right, variable.rightValue}, where);
    return end(where, {variable.name, true, variable.dir == VMIntVar::up, variable.leftValue, variable.rightValue});
}

QString PackageChecks::onModule(const VMStruct &module, const QString &name, int addressBits)
{
    m_module = &module;
    const Where where = {name, &module};
    begin(where);
    declare(where);
    if (addressBits < kLeastAddressBits || addressBits > kMostAddressBits)
        refuse(rules::vhdlAddressBits, where);
    return end(where, {name, false, false, addressBits});
}

QString PackageChecks::onConstant(const QString &name, const PackageNumber &value, const VMXMLElement &cause)
{
    const Where where = {name, &cause};
    begin(where);
    checkExpression(value, where);
    declare(where);
    return end(where, {name, false, false, value.number});
}

QString PackageChecks::onRange(const QString &name, const PackageNumber &left, const PackageNumber &right,
                               const VMXMLElement &cause)
{
    const Where where = {name, &cause};
    begin(where);
    if (left.text.isEmpty()) {
        refuse(rules::vhdlNoFields, {{}, &cause});
        return end();
    }
    checkExpression(left, where);
    checkExpression(right, where);
    declare(where);
    return end(where, {name, true, false, left.number, right.number});
}

QString PackageChecks::onType(const QString &name, const QString &range, const VMXMLElement &cause)
{
    const Where where = {name, &cause};
    begin(where);
    // The range of the array's own register, not that of another one of the name.
    if (m_gone.contains(range.toLower())) {
        m_goneName = range;
        refuse(rules::vhdlDependent, where);
    } else if (!m_declared.contains(range.toLower())) {
        refuse(rules::vhdlNoFields, {{}, &cause});
    }
    const auto isHidden = [this](const QString &word) {
        return (makesComments() ? m_standing : m_declared).contains(word.toLower()) ||
               std::ranges::any_of(m_used, [&](const auto *used) { return m_packages.namesOf(*used).contains(word); });
    };
    if (isHidden(u"NATURAL"_s) || isHidden(u"STD_LOGIC_VECTOR"_s))
        refuse(rules::vhdlHiddenType, where);
    declare(where);
    m_types += m_refusal ? 0 : 1;
    return end();
}

QString PackageChecks::onUnevaluated(const QString &name, const VMXMLElement &cause)
{
    const Where where = {name, &cause};
    begin(where);
    refuse(rules::vhdlUnevaluated, where);
    ++m_refusedCount;
    return reason();
}

void PackageChecks::giveNames(ChipPackages &packages) const
{
    PackageNames names;
    QSet<QString> refused;
    for (const VMIntVar &variable : *m_archive.variables)
        refused.insert(variable.name.toUpper());
    if (m_wholeReason.isEmpty()) {
        for (const QString &name : m_standing)
            names.insert(name.toUpper(), std::nullopt);
        for (const auto &[name, value] : m_ownConstants.asKeyValueRange())
            names.insert(name, value);
        refused.removeIf([&](const QString &name) { return names.contains(name) && !m_gone.contains(name.toLower()); });
    }
    packages.setNames(m_archive, std::move(names), std::move(refused));
}

void PackageChecks::report()
{
    const QString subject =
        m_module ? u"Module '%1'"_s.arg(m_module->getTypeString()) : u"Package '%1'"_s.arg(m_archive.getVHDLPkgName());
    for (std::size_t at = 0; at < m_refused.size(); ++at) {
        const Refused &refused = m_refused[at];
        if (refused.count > 0)
            m_findings.append(Finding(
                *rules::vhdlRefusals[at].rule, refused.place,
                {subject, QString::number(refused.count), refused.count == 1 ? u"line"_s : u"lines"_s, refused.first}));
    }
    m_refused = {};
    m_module = nullptr;
}

/// A line begins that declares the name of \a where.
void PackageChecks::begin(const Where &where)
{
    m_name = where.name.toLower();
    m_refusal = nullptr;
    m_goneName.clear();
}

void PackageChecks::refuse(const Rule &rule, const Where &where)
{
    m_refusal = m_refusal ? m_refusal : &rule;
    const auto row = std::ranges::find(rules::vhdlRefusals, &rule, &rules::LineRule::rule);
    Refused &refused = m_refused[static_cast<std::size_t>(row - std::begin(rules::vhdlRefusals))];
    if (refused.count++ > 0)
        return;
    refused.place = placeOf(where);
    const bool hasPath = where.element && where.element != m_module;
    refused.first = hasPath ? pathOf(*where.element) : where.name;
    if (hasPath && !where.name.isEmpty())
        refused.first += ": "_L1 + where.name;
}

/// Why the line that was begun becomes a comment.
QString PackageChecks::reason() const
{
    if (!m_refusal || !makesComments())
        return {};
    if (m_refusal == &rules::vhdlDependent && !m_goneName.isEmpty())
        return u"it uses %1, which is refused"_s.arg(m_goneName);
    return std::ranges::find(rules::vhdlRefusals, m_refusal, &rules::LineRule::rule)->reason.toString();
}

/// The line that was begun ends. What it declares is there from here on, or is not.
QString PackageChecks::end()
{
    m_refusedCount += m_refusal ? 1 : 0;
    if (!makesComments())
        return {};
    if (m_refusal) {
        m_gone.insert(m_name);
    } else {
        m_gone.remove(m_name); // of a range without fields
        m_standing.insert(m_name);
    }
    return reason();
}

QString PackageChecks::end(const Where &where, PackageLine line)
{
    line.element = where.element;
    line.variable = where.variable;
    if (!m_refusal)
        m_lines.push_back(std::move(line));
    return end();
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
    if (!isDeclarableName(where.name))
        refuse(rules::vhdlIllegalName, where);
    else if (m_declared.contains(m_name))
        refuse(rules::vhdlDeclaredTwice, where);
    m_declared.insert(m_name);
}

void PackageChecks::checkExpression(const PackageNumber &number, const Where &where)
{
    const QString goneBefore = std::exchange(m_goneName, {});
    qint64 value = 0;
    switch (evaluateStatic(
        number.text, [this](const QString &name) { return valueOf(name); }, &value)) {
    case StaticResult::Value:
        if (makesComments() && value != number.number)
            refuse(rules::vhdlOtherNumber, where);
        break;
    case StaticResult::TooLarge:
        refuse(rules::vhdlTooLarge, where);
        break;
    case StaticResult::Unreadable:
        refuse(m_goneName.isEmpty() ? rules::vhdlUnreadable : rules::vhdlDependent, where);
        break;
    }
    m_goneName = goneBefore.isEmpty() ? m_goneName : goneBefore;
}

std::optional<qint64> PackageChecks::valueOf(const QString &name)
{
    const QString folded = name.toLower();
    const bool isOwn = m_declared.contains(folded);
    if (isOwn ? m_gone.contains(folded) : m_usedGone.contains(name)) {
        m_goneName = name;
        return std::nullopt;
    }
    if (folded == m_name && !isOwn) // in its own declaration a name means nothing
        return std::nullopt;
    if (isOwn) {
        const auto own = m_ownConstants.constFind(name);
        return own == m_ownConstants.cend() ? std::nullopt : std::optional<qint64>(*own);
    }
    const auto known = m_usedConstants.constFind(name);
    if (known != m_usedConstants.cend())
        return *known;
    if (isGoneFromUsed(name)) {
        m_usedGone.insert(name);
        m_goneName = name;
        return std::nullopt;
    }
    return *m_usedConstants.insert(name, lookUp(name));
}

/// Whether VHDL would not see the name in a package that this one uses, since it stands in a comment there, or the use
/// does. It is not taken from another package then.
bool PackageChecks::isGoneFromUsed(const QString &name) const
{
    const auto isRefused = [&](const auto *used) { return m_packages.refusedNamesOf(*used).contains(name); };
    const auto wasThere = [&](const auto *used) { return m_packages.variablesOf(*used).contains(name); };
    return std::ranges::any_of(m_used, isRefused) || std::ranges::any_of(m_refusedUses, wasThere);
}

/// The constant of that name in the packages that this one uses. A name that two packages declare is that of neither,
/// also if one of them is a package that all use, and that of this package is its own.
std::optional<qint64> PackageChecks::lookUp(const QString &name) const
{
    if (isStandardName(name) || name.compare(m_archive.getVHDLPkgName(), Qt::CaseInsensitive) == 0)
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
