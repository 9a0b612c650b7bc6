// What lint says of trees. A case of the golden files has a fault of each kind beside what is just none.

#include "check/lint.h"
#include "support/loaded.h"

#include <QDirIterator>
#include <QRegularExpression>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// What lint says of \a map, as "LINE:COLUMN text [id]" with the line in its file, line by line.
QString findingsOf(const VMMemoryMap &map)
{
    veldmap::FindingList found;
    veldmap::Lint().report(map, found);
    QStringList lines;
    for (const veldmap::Finding &finding : std::as_const(found.findings))
        lines += u"%1:%2 %3 [%4]"_s.arg(QString::number(finding.place.line), QString::number(finding.place.column),
                                        finding.text(), finding.rule->id);
    return lines.join(u'\n');
}

} // namespace

TEST(TreeChecks, Cases)
{
    const Answer answer = [](const Loaded &soc, const QStringList &) { return findingsOf(*soc.map); };
    expectCases(u"check/registers.txt"_s, answer, u"<module name=\"uart\">%1\n</module>"_s);
    expectCases(u"check/memory_map.txt"_s, answer);
    expectCases(u"check/structures.txt"_s, answer);
    expectCases(u"check/generated_names.txt"_s, answer);
}

TEST(TreeChecks, ChipAndSoftwareShareTheMemory)
{
    const QString types = u"<module name='uart'><reg name='a' protect='r'/></module>"_s;
    const Loaded chip = Loaded::archive(types + u"<instance name='U0' type='uart' address='0x100'/>"_s);
    const Loaded soft = Loaded::archive(types + u"<instance name='U0' type='uart' address='0x100'/>\n"
                                                u"<instance name='heap' type='uart' address='0x102'/>"_s);
    chip.map->softRootArchive = std::exchange(soft.map->chipRootArchive, nullptr);
    EXPECT_EQ(findingsOf(*chip.map),
              u"2:51 instance 'heap' lies at 0x00000102, which is no multiple of 4 as the alignment of its type 'uart' "
              "asks for [instance-unaligned]\n"
              "2:51 members of instance 'heap' (0x00000102 to 0x00000105) overlap those of 'U0' (0x00000100 to "
              "0x00000103) [instance-overlap]"_s);
}

TEST(TreeChecks, FilesThatIncludeOneAnother)
{
    const Loaded soc({{u"soc.xml"_s, u"<archive>\n"
                                     "<include file='uart.xml'/>\n"
                                     "<include file='sub/uart.xml'/>\n"
                                     "<include file='common.xml'/><include file='sub/../common.xml'/>\n"
                                     "<include file='named.xml'/><include file='sub/../named.xml'/>\n"
                                     "<include load='no' file='rest.xml'>\n"
                                     "<case cond='(0x10-16)' file='never.xml'/>\n"
                                     "<case cond='DEPTH-4' file='deep.xml'/><case cond='1' file='flat.xml'/>\n"
                                     "</include></archive>"_s},
                      {u"uart.xml"_s, u"<archive asm='no'><var name='DEPTH' value='4'/></archive>"_s},
                      {u"sub/uart.xml"_s, u"<archive asm='no'><include file='plain.xml'/></archive>"_s},
                      {u"sub/plain.xml"_s, u"<archive asm='no'/>"_s},
                      {u"common.xml"_s, u"<archive/>"_s},
                      {u"named.xml"_s, u"<archive relative='other.xml'/>"_s}});
    EXPECT_EQ(findingsOf(*soc.map),
              u"1:18 the headers of 'sub/uart.xml' and 'uart.xml' have one include guard, _UART_H_: where both are "
              "included, one is left out [guard-twice]\n"
              "1:31 file 'named.xml' is read twice, as 'other.xml' and 'other.xml': what it declares is there twice "
              "[file-twice]\n"
              "2:26 the assembly header of 'soc.xml' includes 'uart_asm.h', which is not written: asm is \"no\" there "
              "[assembly-missing]\n"
              "3:30 the assembly header of 'soc.xml' includes 'uart_asm.h', which is not written: asm is \"no\" there "
              "[assembly-missing]\n"
              "7:41 condition '(0x10-16)' never holds: 'never.h' is never included [condition-never]"_s);
}

TEST(LintRules, AreListedAndDocumented)
{
    static const QRegularExpression row(u"LintRule \\w+\\s*=\\s*\\{\\s*\\{\"([^\"]*)\"_L1"_s);
    QStringList listed;
    for (const veldmap::LintRule *rule : veldmap::lintRules())
        listed += rule->rule.id;
    const QString documentation = readFile(QStringLiteral(SOURCE_DIRECTORY "/../docs/rules.md"));
    qsizetype rows = 0;
    QDirIterator sources(QStringLiteral(SOURCE_DIRECTORY "/check"), {u"*_rules.h"_s}, QDir::Files);
    while (sources.hasNext()) {
        for (const QRegularExpressionMatch &match : row.globalMatch(readFile(sources.next()))) {
            const QString id = match.captured(1);
            ++rows;
            EXPECT_EQ(listed.count(id), 1) << id.toStdString();
            EXPECT_TRUE(documentation.contains(u"\n### "_s + id + u'\n')) << id.toStdString();
        }
    }
    EXPECT_EQ(rows, listed.size());
}
