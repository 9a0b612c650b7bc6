#pragma once

#include "findings/finding.h"
#include "vhdl/maps.h"
#include "vhdl/packages.h"
#include "vhdl/rules.h"

#include <QHash>
#include <QSet>

#include <array>
#include <iterator>
#include <optional>
#include <vector>

struct VMIntVar;
class VMRootArchive;
class VMStruct;
class VMXMLArchive;

namespace veldmap {

/// What a package declares, in upper case, with the values of its constants.
using PackageNames = QHash<QString, std::optional<qint64>>;

/// What the packages of one chip mean to one another.
class ChipPackages {
public:
    explicit ChipPackages(const VMRootArchive &root);

    /// The names that the package of \a archive, which is one of the root's, declares for variables and ranges; of
    /// equal names the first, which is the one that VHDL takes.
    const PackageNames &variablesOf(const VMXMLArchive &archive) const;
    /// The same, or where refused lines become comments all names that are left, once they were given.
    const PackageNames &namesOf(const VMXMLArchive &archive) const;
    /// The names of variables and ranges that do not stand in the package, or of which one does not.
    const QSet<QString> &refusedNamesOf(const VMXMLArchive &archive) const;
    /// Gives the names that are left in the package of \a archive, and those that are not.
    void setNames(const VMXMLArchive &archive, PackageNames names, QSet<QString> refused);
    /// The name of a package that none of the chip's has.
    const QString &standIn() const { return m_standIn; }
    /// All archives, each behind those that it includes, but for circles.
    const QList<const VMXMLArchive *> &inOrderOfUse() const { return m_order; }
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

    QHash<const VMXMLArchive *, PackageNames> m_variables;
    QHash<const VMXMLArchive *, PackageNames> m_names; // that were given
    QHash<const VMXMLArchive *, QSet<QString>> m_refusedNames;
    QList<const VMXMLArchive *> m_order;
    QSet<const VMXMLArchive *> m_namesakes;
    QString m_standIn = QStringLiteral("refused_lines");
    QHash<const VMXMLArchive *, Arrival> m_arrivals;
    QList<const VMXMLArchive *> m_open;
    int m_circles = 0;
};

/// A declaration that VHDL takes, with the numbers of the tree.
struct PackageLine {
    QString name;
    bool isRange = false;
    bool isAscending = false;
    qint64 left = 0; ///< of a constant its value
    qint64 right = 0;
    const VMXMLElement *element = nullptr; ///< what it is for, or else
    const VMIntVar *variable = nullptr;
};

/// Follows the declarations of one package and tells which of them no VHDL tool takes: the description is to be mended.
/// Each operation on a line gives the reason for which it becomes a comment; none where refused lines stay.
///
/// Where they become comments, VHDL no longer sees what they declared. Whatever uses such a name is refused too, since
/// it would else mean what another package declares; and so is an expression that VHDL would make another number of.
///
/// Knows what VHDL-93 and VHDL-2008 have in common: names, their one declaration, whatever their case, and expressions
/// of integers, in which only what stands further up and what the included packages declare is known.
class PackageChecks final : public DeclarationListener {
public:
    /// Findings are appended to \a findings.
    PackageChecks(const VMXMLArchive &archive, const ChipPackages &packages, RefusedLines refusedLines,
                  QList<Finding> &findings);

    /// Why no line of the package can stand; empty when they can.
    const QString &wholeReason() const { return m_wholeReason; }
    bool makesComments() const { return m_refusedLines == RefusedLines::Comments; }

    /// The line that uses the package of \a used.
    QString onUse(const VMXMLArchive &used);
    QString onComment(const VMIntVar &variable);
    /// The constant \a name of a variable, with the text \a value.
    QString onVariable(const VMIntVar &variable, const QString &name, const QString &value);
    /// The subtype of a range of the description.
    QString onVariableRange(const VMIntVar &variable, const QString &left, const QString &right);
    /// A module begins, with the constant \a name for its \a addressBits.
    QString onModule(const VMStruct &module, const QString &name, int addressBits);
    QString onConstant(const QString &name, const PackageNumber &value, const VMXMLElement &cause) override;
    QString onRange(const QString &name, const PackageNumber &left, const PackageNumber &right,
                    const VMXMLElement &cause) override;
    QString onType(const QString &name, const QString &range, const VMXMLElement &cause) override;
    QString onUnevaluated(const QString &name, const VMXMLElement &cause) override;

    /// Tells what was found since the last report, each kind once.
    void report();

    /// The constants and ranges that VHDL takes, so far.
    const std::vector<PackageLine> &lines() const { return m_lines; }
    /// How many lines it does not take, and how many types it takes.
    int refusedLines() const { return m_refusedCount; }
    int types() const { return m_types; }
    /// Gives \a packages the names of this package as they are now.
    void giveNames(ChipPackages &packages) const;

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

    void begin(const Where &where);
    /// Counts the line that was begun as one that VHDL refuses.
    void refuse(const Rule &rule, const Where &where);
    QString reason() const;
    QString end();
    QString end(const Where &where, PackageLine line);
    /// Where the description says what a line is for.
    Place placeOf(const Where &where) const;
    void declare(const Where &where);
    void checkExpression(const PackageNumber &number, const Where &where);
    std::optional<qint64> valueOf(const QString &name);
    bool isGoneFromUsed(const QString &name) const;
    std::optional<qint64> lookUp(const QString &name) const;
    QString pathOf(const VMXMLElement &element) const;

    const VMXMLArchive &m_archive;
    const ChipPackages &m_packages;
    const RefusedLines m_refusedLines;
    QString m_wholeReason;
    QList<const VMXMLArchive *> m_used;        // each once
    QList<const VMXMLArchive *> m_refusedUses; // whose names are not seen
    QList<Finding> &m_findings;
    const VMStruct *m_module = nullptr;
    std::array<Refused, std::size(rules::vhdlRefusals)> m_refused; // in the order of the rules
    QSet<QString> m_declared;                                      // in lower case
    QHash<QString, qint64> m_ownConstants;                         // of the variables so far, in upper case
    QHash<QString, std::optional<qint64>> m_usedConstants;         // that were looked up, in upper case
    QSet<QString> m_gone;                                          // names of comments, in lower case
    QSet<QString> m_standing;                                      // of all others, in lower case
    QSet<QString> m_usedGone; // names that were looked up and that a used package refuses, in upper case

    // The line that was begun.
    QString m_name;                  // in lower case
    const Rule *m_refusal = nullptr; // the first
    QString m_goneName;              // that it uses, if it does

    std::vector<PackageLine> m_lines;
    int m_refusedCount = 0;
    int m_types = 0;
};

} // namespace veldmap
