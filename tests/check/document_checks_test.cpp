// The rules on what stands in a document: each with one text that it tells of and one beside it that is right.

#include "check/lint.h"
#include "loading/load.h"
#include "support/loaded.h"

using namespace Qt::StringLiterals;

namespace {

/// What lint finds in the documents of the description \a files, as "LINE:COLUMN TEXT [ID]", names that nothing uses
/// only with \a looksForUnused.
QStringList findingsIn(const Files &files, bool looksForUnused = false)
{
    const QTemporaryDir directory;
    for (const auto &[name, text] : files)
        writeFile(directory.filePath(name), text.toUtf8());
    VMMemoryMap map;
    veldmap::Lint lint([&](const veldmap::LintRule &rule) { return rule.isOn || looksForUnused; });
    veldmap::FindingList told;
    const auto root = veldmap::loadRoot(map, directory.filePath(files.front().first), true, told, {1, &lint});
    veldmap::FindingList found;
    lint.report(VMMemoryMap(), found);
    QStringList texts;
    for (const veldmap::Finding &finding : std::as_const(found.findings))
        texts += u"%1:%2 %3 [%4]"_s.arg(QString::number(finding.place.line), QString::number(finding.place.column),
                                        finding.text(), QString(finding.rule->id));
    return texts;
}

/// Expects of each case in the golden file \a name the findings that stand there behind "=> lint". A case is the
/// content of an archive, from its second line on; a line of dashes ends it. UPDATE_GOLDEN=1 writes the findings anew.
void expectFindings(const QString &name)
{
    QStringList cases = readFile(QStringLiteral(GOLDEN_DIRECTORY "/") + name).split(u"\n----------\n"_s);
    for (QString &text : cases) {
        const QString content = text.section(u"\n=> lint"_s, 0, 0);
        const QStringList found = findingsIn({{u"soc.xml"_s, u"<archive>\n"_s + content + u"\n</archive>"_s}});
        text = QStringList({content, u"=> lint"_s}).join(u'\n') + u'\n' + found.join(u'\n');
    }
    expectGolden(name, cases.join(u"\n----------\n"_s));
}

} // namespace

TEST(DocumentChecks, Words)
{
    expectFindings(u"check/words.txt"_s);
}

TEST(DocumentChecks, Names)
{
    expectFindings(u"check/names.txt"_s);
}

TEST(DocumentChecks, Numbers)
{
    expectFindings(u"check/numbers.txt"_s);
}

TEST(DocumentChecks, Texts)
{
    expectFindings(u"check/texts.txt"_s);
}

TEST(DocumentChecks, Waivers)
{
    expectFindings(u"check/waivers.txt"_s);
    const QStringList found =
        findingsIn({{u"soc.xml"_s, u"<!-- veldmap: allow changed-name --><archive foo=''><include file='a.xml'/>"
                                   "<var name='a-b' value='1'/></archive>"_s},
                    {u"a.xml"_s, u"<archive><var name='c-d' value='1'/></archive>"_s}});
    EXPECT_EQ(found, QStringList({u"1:52 archive: 'foo' is no attribute of 'archive' [unknown-attribute]"_s,
                                  u"1:36 var 'c-d': the name 'c-d' becomes 'c_d', since names have letters, digits "
                                  "and underscores alone [changed-name]"_s}));
}

// A name is used wherever it stands as a word, also of another file; files with instances, C text or hardware are of
// use.
TEST(DocumentChecks, UnusedNames)
{
    const QStringList found = findingsIn(
        {{u"soc.xml"_s,
          u"<archive><include file='types.xml'/><include file='idle.xml'/>\n"
          "<include file='list.xml'/><include file='own.xml'/><include file='c.xml'/>\n"
          "<include file='hw.xml'/><var name='UNUSED' value='1'/><var name='a-b' value='1'/>\n"
          "<enum name='e1'><entry name='E1'/></enum><enum name='e2'><entry name='E2' value='a_b'/></enum>\n"
          "<enum name='e3'><entry name='E3'/></enum><var name='IN_C' value='E2'/><var name='W' value='3'/>\n"
          "<module name='m'><reg name='r' protect='r' count='E_T'><bits name='f' pos='W:0' access='r'>"
          "<options linkenum='e1'/></bits></reg></module><cjoker>int a[IN_C];</cjoker></archive>"_s},
         {u"types.xml"_s, u"<archive><enum name='kind'><entry name='E_T'/></enum></archive>"_s},
         {u"idle.xml"_s,
          u"<archive><var name='X' value='1'/><typedef name='t'><reg name='r' count='X'/></typedef></archive>"_s},
         {u"list.xml"_s, u"<archive><include file='types.xml'/></archive>"_s},
         {u"own.xml"_s, u"<archive><typedef name='o'/><instance name='O' type='o' address='0'/></archive>"_s},
         {u"c.xml"_s, u"<archive><cjoker>#define A</cjoker></archive>"_s},
         {u"hw.xml"_s, u"<archive vhdlpkg='hw_pkg'/>"_s}},
        true);
    QStringList unused = found.filter(u"[unused-"_s);
    EXPECT_EQ(unused,
              QStringList({u"1:62 file 'idle.xml' is included, but no other file uses what it declares "
                           "[unused-file]"_s,
                           u"3:54 variable 'UNUSED' is used by no expression, text or C code [unused-variable]"_s,
                           u"5:16 enum 'e3' and its entries are used by no field, member or expression "
                           "[unused-enum]"_s}));
}
