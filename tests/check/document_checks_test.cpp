// The rules on what stands in a document: each with one text that it tells of and one beside it that is right.

#include "check/lint.h"
#include "loading/load.h"
#include "support/loaded.h"

using namespace Qt::StringLiterals;

namespace {

/// What lint finds in the documents of the description \a files, as "LINE:COLUMN TEXT [ID]".
QStringList findingsIn(const Files &files)
{
    const QTemporaryDir directory;
    for (const auto &[name, text] : files)
        writeFile(directory.filePath(name), text.toUtf8());
    VMMemoryMap map;
    veldmap::Lint lint;
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
