#include "vhdl/packages.h"

#include "model/aggregates.h"
#include "model/archive.h"
#include "text/lines.h"
#include "vhdl/comments.h"
#include "vhdl/maps.h"
#include "vhdl/notation.h"
#include "vhdl/package_checks.h"

using namespace Qt::StringLiterals;
using veldmap::appendLine;
using veldmap::Column;
using veldmap::commentOut;
using veldmap::FindVariable;
using veldmap::MapWriter;
using veldmap::PackageChecks;
using veldmap::printableComment;

namespace {

constexpr QStringView kPackageHead = uR"vhdl(-- ###############################################################
--          @file@
-- ###############################################################
-- Generated automatically by Veldspector
--
-- Module Description :
--
--@blanks@
--
-- ---------------------------------------------------------------
--  $HeadURL: $
--  $Author: $
--  $Date: $
--  $Revision: $
-- ---------------------------------------------------------------
-- ###############################################################
--          VHDL CODE
-- ###############################################################
-------------------------------------------------
-- Libraries
-------------------------------------------------
LIBRARY IEEE;
USE ieee.std_logic_1164.all;

)vhdl";

constexpr Column kValueColumn = {48};

QString vhdlExpression(const QString &expression)
{
    return vhdl_clean_expr(expression.toUpper());
}

void appendComment(QString &text, QString comment)
{
    appendLine(text, "--"_L1, comment.replace("<br>"_L1, "\n--"_L1));
}

void appendVariable(QString &text, const VMIntVar &variable, PackageChecks *checks)
{
    const bool isMark = veldmap::isSpacer(variable);
    if (isMark)
        text += u'\n';
    const QString reason = checks ? checks->onComment(variable) : QString();
    if (!reason.isEmpty())
        appendLine(text, "-- "_L1, reason, ": a ? stands for each"_L1);
    if (!variable.comment.isEmpty())
        appendComment(text, reason.isEmpty() ? variable.comment : printableComment(variable.comment));
    if (isMark)
        return;
    const qsizetype begin = text.size();
    const QString left = vhdlExpression(variable.leftExpression);
    if (!variable.isRange) {
        const QString name = variable.name.toUpper();
        appendLine(text, "constant "_L1, name, u":", kValueColumn, "integer := "_L1, left, u";");
        if (checks)
            commentOut(text, begin, checks->onVariable(variable, name, left));
        return;
    }
    const QString right = vhdlExpression(variable.rightExpression);
    appendLine(text, "subtype "_L1, variable.name, " is"_L1, kValueColumn, "integer range "_L1, left,
               variable.dir == VMIntVar::down ? " downto "_L1 : " to "_L1, right, u";");
    if (checks)
        commentOut(text, begin, checks->onVariableRange(variable, left, right));
}

/// \a package with every line that is none yet as a comment. A tool wants a file to declare something, so an empty
/// package called \a standIn, which nobody uses, is behind it.
QString wholeCommentOf(const QString &package, const QString &reason, const QString &standIn)
{
    QString text;
    appendLine(text, "-- Refused, since "_L1, reason, u":");
    for (const QStringView line : QStringView(package).chopped(1).split(u'\n'))
        appendLine(text, line.isEmpty() || line.startsWith("--"_L1) ? ""_L1 : "--"_L1,
                   printableComment(line.toString()));
    appendLine(text, "package "_L1, standIn, " is"_L1);
    appendLine(text, "end "_L1, standIn, u";");
    return text;
}

/// The block of a module.
void appendModule(QString &text, const VMStruct &module, PackageChecks *checks, const FindVariable &find = {})
{
    const QString name = module.getTypeString().toUpper();
    const int addressBits = vhdl_log2(module.getBitSize()) - 2;
    appendLine(text, "-- Register definition"_L1);
    appendLine(text, "-- Register Map"_L1);
    appendLine(text, "-- Address bit for register decoding"_L1);
    const qsizetype begin = text.size();
    appendLine(text, "constant "_L1, name, "_REG_NBA: integer range 1 to 12 := "_L1, addressBits, u";");
    if (checks)
        commentOut(text, begin, checks->onModule(module, name + "_REG_NBA"_L1, addressBits));
    text += u'\n';
    appendLine(text, "-- Registers are defined by"_L1);
    appendLine(text, "--  * an address :          at_REG_NAME"_L1);
    appendLine(text, "--  * a logical map :       constant or ranges for each field l_Field_Name"_L1);
    appendLine(text, "--  * a physical map :      constant or ranges for each field p_Field_Name"_L1);
    appendLine(text, "--  * a physical range :    range_Reg_Name"_L1);
    text += u'\n';
    QStringList seen; // what is repeated within the module is commented out
    MapWriter maps(seen, checks, find);
    maps.write(module, 0);
    text += maps.takeText();
    if (checks)
        checks->report();
}

} // namespace

namespace veldmap {

PackageTexts::PackageTexts(const VMRootArchive &root, RefusedLines refusedLines)
    : m_packages(std::make_unique<ChipPackages>(root)), m_names(std::make_unique<const ScopeIndex>(root)),
      m_refusedLines(refusedLines)
{
    if (refusedLines == RefusedLines::Stay)
        return;
    // What a package uses of another is known once that one is written.
    for (const VMXMLArchive *archive : m_packages->inOrderOfUse()) {
        QList<Finding> findings;
        PackageChecks checks(*archive, *m_packages, m_refusedLines, findings);
        textOf(*archive, checks);
        checks.giveNames(*m_packages);
    }
}

PackageTexts::~PackageTexts() = default;

QString PackageTexts::textOf(const VMXMLArchive &archive, QList<Finding> &findings) const
{
    PackageChecks checks(archive, *m_packages, m_refusedLines, findings);
    const QString text = textOf(archive, checks);
    return checks.makesComments() && !checks.wholeReason().isEmpty()
               ? wholeCommentOf(text, checks.wholeReason(), m_packages->standIn())
               : text;
}

PackageTexts::Lines PackageTexts::linesOf(const VMXMLArchive &archive) const
{
    QList<Finding> findings;
    PackageChecks checks(archive, *m_packages, m_refusedLines, findings);
    textOf(archive, checks);
    if (!checks.wholeReason().isEmpty())
        return {{}, static_cast<int>(checks.lines().size()) + checks.refusedLines(), checks.types()};
    return {checks.lines(), checks.refusedLines(), checks.types()};
}

QString PackageTexts::textOf(const VMXMLArchive &archive, PackageChecks &checks) const
{
    const auto find = [&](const QString &name) { return m_names->findVariable(archive, name); };
    const QString package = archive.getVHDLPkgName();
    const QString file = archive.getVHDLFileRelativeName();
    QString text = expand(kPackageHead, {{u"file"_s, checks.makesComments() ? printableComment(file) : file},
                                         {u"blanks"_s, QString(6, u' ')}});
    for (const VMXMLArchive *included : archive.includedArchives) {
        const qsizetype begin = text.size();
        appendLine(text, "USE work."_L1, included->getVHDLPkgName(), ".all;"_L1);
        commentOut(text, begin, checks.onUse(*included));
    }
    appendLine(text);
    appendLine(text, "package "_L1, package, " is"_L1);
    appendLine(text);
    appendLine(text, "-- Archive Variables"_L1);
    for (const VMIntVar &variable : *archive.variables)
        appendVariable(text, variable, &checks);
    checks.report();
    appendLine(text);
    for (const auto &element : archive.templates) {
        const auto *module = elementCast<VMStruct>(element.get());
        if (module && module->isTypedef == 0)
            appendModule(text, *module, &checks, find);
    }
    appendLine(text);
    appendLine(text, "end "_L1, package, u";");
    return text;
}

} // namespace veldmap

QString VMXMLElement::vhdl_content() const
{
    QString text;
    if (const auto *module = elementCast<VMStruct>(this))
        appendModule(text, *module, nullptr);
    return text;
}
