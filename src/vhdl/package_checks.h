#pragma once

#include "findings/finding.h"
#include "vhdl/maps.h"
#include "vhdl/rules.h"

#include <QHash>
#include <QSet>

#include <array>
#include <iterator>
#include <optional>

struct VMIntVar;
class VMRootArchive;
class VMStruct;
class VMXMLArchive;

namespace veldmap {

/// What the packages of one chip mean to one another.
class ChipPackages {
public:
    explicit ChipPackages(const VMRootArchive &root);

    /// The names that the package of \a archive, which is one of the root's, declares for variables and ranges, in
    /// upper case, with the values of its constants; of equal names the first, which is the one that VHDL takes.
    const QHash<QString, std::optional<qint64>> &namesOf(const VMXMLArchive &archive) const;
    /// Whether both packages use each other, directly or through others.
    bool areCircular(const VMXMLArchive &one, const VMXMLArchive &other) const;
    /// Whether an earlier archive has a package of the same name, whatever its case.
    bool isNamesake(const VMXMLArchive &archive) const { return m_namesakes.contains(&archive); }

private:
    struct Arrival {
        int number = 0; ///< from 1, in the order of coming
        int circle = 0; ///< from 1, when its circle is known
    };
    int followIncludes(const VMXMLArchive &archive);

    QHash<const VMXMLArchive *, QHash<QString, std::optional<qint64>>> m_names;
    QSet<const VMXMLArchive *> m_namesakes;
    QHash<const VMXMLArchive *, Arrival> m_arrivals;
    QList<const VMXMLArchive *> m_open;
    int m_circles = 0;
};

/// Follows the declarations of one package and tells which of them no VHDL tool takes. The text stays as it is: the
/// description is to be mended.
///
/// Knows what VHDL-93 and VHDL-2008 have in common: names, their one declaration, whatever their case, and expressions
/// of integers, in which only what stands further up and what the included packages declare is known.
class PackageChecks final : public DeclarationListener {
public:
    /// Findings are appended to \a findings.
    PackageChecks(const VMXMLArchive &archive, const ChipPackages &packages, QList<Finding> &findings);

    void onComment(const VMIntVar &variable);
    /// The constant \a name of a variable, with the text \a value.
    void onVariable(const VMIntVar &variable, const QString &name, const QString &value);
    /// The subtype of a range of the description.
    void onVariableRange(const VMIntVar &variable, const QString &left, const QString &right);
    /// A module begins, with the constant \a name for its \a addressBits.
    void onModule(const VMStruct &module, const QString &name, int addressBits);
    void onConstant(const QString &name, const QString &value, const VMXMLElement &cause) override;
    void onRange(const QString &name, const QString &left, const QString &right, const VMXMLElement &cause) override;
    void onType(const QString &name, const QString &range, const VMXMLElement &cause) override;
    void onUnevaluated(const QString &name, const VMXMLElement &cause) override;

    /// Tells what was found since the last report, each kind once.
    void report();

private:
    /// Where a line stands: what it declares, and what of the description it is for: a field, a register, an array or a
    /// module, or a variable. Both are null for a line that is for the package itself.
    struct Where {
        const QString &name;
        const VMXMLElement *element = nullptr;
        const VMIntVar *variable = nullptr;
    };
    /// The lines that one rule refuses.
    struct Refused {
        int count = 0;
        QString first; ///< path and line of the first
        Place place;   ///< of what the first is for
    };

    /// Counts a line that VHDL refuses.
    void refuse(const Rule &rule, const Where &where);
    /// Where the description says what a line is for.
    Place placeOf(const Where &where) const;
    void declare(const Where &where);
    void checkExpression(const QString &text, const Where &where);
    std::optional<qint64> valueOf(const QString &name);
    std::optional<qint64> lookUp(const QString &name) const;
    QString pathOf(const VMXMLElement &element) const;

    const VMXMLArchive &m_archive;
    const ChipPackages &m_packages;
    QList<const VMXMLArchive *> m_used; // each once
    QList<Finding> &m_findings;
    const VMStruct *m_module = nullptr;
    std::array<Refused, std::size(rules::vhdlRefusals)> m_refused; // in the order of the rules
    QSet<QString> m_declared;                                      // in lower case
    QHash<QString, qint64> m_ownConstants;                         // of the variables so far, in upper case
    QHash<QString, std::optional<qint64>> m_usedConstants;         // that were looked up, in upper case
};

} // namespace veldmap
