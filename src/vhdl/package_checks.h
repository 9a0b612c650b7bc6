#pragma once

#include "vhdl/maps.h"
#include "vhdl/packages.h"

#include <QHash>
#include <QSet>

#include <array>
#include <optional>

class VMStruct;
class VMXMLArchive;

namespace veldmap {

/// The constants that the packages of one chip declare for variables, by their name in upper case; of equal names the
/// first, which is the one that VHDL takes.
class PackageConstants {
public:
    const QHash<QString, qint64> &of(const VMXMLArchive &archive);

private:
    QHash<const VMXMLArchive *, QHash<QString, qint64>> m_tables;
};

/// Follows the declarations of one package and tells which of them no VHDL tool takes. The text stays as it is: the
/// description is to be mended.
///
/// Knows what VHDL-93 and VHDL-2008 have in common: names, their one declaration, whatever their case, and expressions
/// of integers, in which only what stands further up and what the included packages declare is known.
class PackageChecks final : public DeclarationListener {
public:
    /// Findings are appended to \a findings.
    PackageChecks(const VMXMLArchive &archive, PackageConstants &constants, QList<VhdlFinding> &findings);

    /// The constant of a variable, whose value is \a number.
    void onVariable(const QString &name, const QString &value, int number);
    /// The subtype of a range of the description.
    void onVariableRange(const QString &name, const QString &left, const QString &right);
    /// A module begins, with the constant \a name for its \a addressBits.
    void onModule(const VMStruct &module, const QString &name, int addressBits);
    void onConstant(const QString &name, const QString &value, const VMXMLElement &cause) override;
    void onRange(const QString &name, const QString &left, const QString &right, const VMXMLElement &cause) override;
    void onType(const QString &name, const QString &range, const VMXMLElement &cause) override;
    void onUnevaluated(const QString &name, const VMXMLElement &cause) override;

    /// Tells what was found since the last report, each kind once.
    void report();

private:
    enum Kind { kNoFields, kDeclaredTwice, kIllegalName, kAddressBits, kTooLarge, kUnreadable, kUnevaluated, kKinds };
    struct Found {
        int count = 0;
        QString first; ///< path and line of the first
    };

    /// Where a line stands: what it declares, and the register that it is for, if it is for one.
    struct Where {
        const QString &name;
        const VMXMLElement *cause = nullptr;
    };

    void find(Kind kind, const Where &where);
    void declare(const Where &where);
    void checkExpression(const QString &text, const Where &where);
    std::optional<qint64> valueOf(const QString &name) const;
    QString pathOf(const VMXMLElement &element) const;

    const VMXMLArchive &m_archive;
    PackageConstants &m_constants;
    QList<VhdlFinding> &m_findings;
    const VMStruct *m_module = nullptr;
    std::array<Found, kKinds> m_found;
    QSet<QString> m_declared;              // in lower case
    QHash<QString, qint64> m_ownConstants; // of the variables so far, in upper case
};

} // namespace veldmap
