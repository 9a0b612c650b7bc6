#include "vhdl/self_check.h"

#include "model/archive.h"
#include "model/instance_paths.h"
#include "model/root_archive.h"
#include "text/lines.h"
#include "text/names.h"
#include "vhdl/comments.h"
#include "vhdl/package_checks.h"
#include "vhdl/static_expression.h"

#include <algorithm>

using namespace Qt::StringLiterals;

// The assertions of one package. What is expected is the tree's number, never a text of the package:
//
//       -- periph/uart_reg_pkg.vhd
//       process begin
//         assert work.uart_reg_pkg.at_CTRL = 0 report "$UART0.ctrl: at_CTRL must be 0" severity failure;
//         assert work.uart_reg_pkg.l_speed'left = 3 and work.uart_reg_pkg.l_speed'right = 1
//           and not work.uart_reg_pkg.l_speed'ascending
//           report "$UART0.ctrl.speed: l_speed must be 3 downto 1" severity failure;
//         wait;
//       end process;

namespace veldmap {

namespace {

constexpr QStringView kHead = uR"vhdl(-- @name@.vhd: made by Veldmap from the description of @file@. Do not edit.
--
-- Run behind the packages it fails where a package has another number than the description, all of them worked out
-- from the description and not from the text of the packages; it says which:
--
--     ghdl -i $(find . -name '*.vhd') && ghdl -m @name@ && ghdl -r @name@
--
-- Not asserted:
--     lines that VHDL refuses, without which --accepted writes packages: @refused@
--     array types; the ranges of their vectors are: @types@

entity @name@ is
end entity;

architecture checks of @name@ is
begin
)vhdl";

/// \a text as it stands between the quotes of a string, in the characters that all tools read alike.
QString quoted(const QString &text)
{
    QString result;
    for (const QChar c : text) {
        if (c == u'"')
            result += c;
        result += c >= u' ' && c < u'\x7F' ? c : u'?';
    }
    return result;
}

/// The least integer has no literal: the sign is an operator.
QString numberText(qint64 number)
{
    return number < -0x7FFFFFFF ? u"-2147483647 - 1"_s : QString::number(number);
}

void appendAssertion(QString &text, const QString &package, const PackageLine &line, const QString &path)
{
    const QString name = "work."_L1 + package + u'.' + line.name;
    const QString what = quoted(path.isEmpty() ? line.name : path + ": "_L1 + line.name);
    const QString left = numberText(line.left);
    if (!line.isRange) {
        appendLine(text, "    assert "_L1, name, " = "_L1, left, " report \""_L1, what, " must be "_L1,
                   QString::number(line.left), "\" severity failure;"_L1);
        return;
    }
    appendLine(text, "    assert "_L1, name, "'left = "_L1, left, " and "_L1, name, "'right = "_L1,
               numberText(line.right));
    appendLine(text, "      and "_L1, line.isAscending ? ""_L1 : "not "_L1, name, "'ascending"_L1);
    appendLine(text, "      report \""_L1, what, " must be "_L1, QString::number(line.left),
               line.isAscending ? " to "_L1 : " downto "_L1, QString::number(line.right), "\" severity failure;"_L1);
}

} // namespace

QString vhdlSelfCheckOf(const VMRootArchive &root, const PackageTexts &packages)
{
    const InstancePaths paths(root);
    QString body;
    int refused = 0;
    int types = 0;
    for (const VMXMLArchive *archive : root.xmlArchives) {
        const PackageTexts::Lines lines = packages.linesOf(*archive);
        refused += lines.refused;
        types += lines.types;
        if (lines.taken.empty())
            continue;
        appendLine(body, "  -- "_L1, printableComment(archive->getVHDLFileRelativeName()));
        appendLine(body, "  process begin"_L1);
        for (const PackageLine &line : lines.taken)
            appendAssertion(body, archive->getVHDLPkgName(), line, line.element ? paths.of(*line.element) : QString());
        appendLine(body, "    wait;"_L1);
        appendLine(body, "  end process;"_L1);
    }
    const QString file = root.xmlArchives.isEmpty() ? QString() : root.xmlArchives.first()->relativeFileName;
    return expand(kHead, {{u"name"_s, vhdlSelfCheckNameOf(root)},
                          {u"file"_s, printableComment(file)},
                          {u"refused"_s, QString::number(refused)},
                          {u"types"_s, QString::number(types)}}) +
           body + "end architecture;\n"_L1;
}

QString vhdlSelfCheckNameOf(const VMRootArchive &root)
{
    const QString base = root.xmlArchives.isEmpty() ? root.rootName : root.xmlArchives.first()->getBaseName();
    QString name = regularizeVariableName(base) + "_self_check"_L1;
    if (!isDeclarableName(name))
        name = u"chip_self_check"_s;
    const auto isPackage = [&](const VMXMLArchive *archive) {
        return archive->getVHDLPkgName().compare(name, Qt::CaseInsensitive) == 0;
    };
    while (std::ranges::any_of(root.xmlArchives, isPackage))
        name += "_2"_L1;
    return name;
}

} // namespace veldmap
