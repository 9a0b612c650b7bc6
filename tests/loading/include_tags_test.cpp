// Which files a description is made of, and what its headers are told of the others.

#include "support/loaded.h"

#include "model/element.h"

using namespace Qt::StringLiterals;

namespace {

QString variable(const QString &name)
{
    return u"<archive><var name='%1' value='1'/></archive>"_s.arg(name);
}

QStringList filesOf(const Loaded &soc)
{
    QStringList files;
    for (const VMXMLArchive *archive : soc.root().xmlArchives)
        files += archive->relativeFileName;
    return files;
}

/// The record of an include as "condition:header ... |header".
QString recordOf(const VMXMLInclude &include)
{
    QString text;
    for (const VMXMLIncludeCondition &alternative : include.conditions)
        text += alternative.condition + u':' + alternative.headerName + u' ';
    return text + u'|' + include.headerName;
}

} // namespace

TEST(Includes, FirstTrueCaseIsLoadedAndAllAreRecorded)
{
    const Loaded soc({{u"soc.xml"_s, u"<archive><include file='no.xml'><case cond='0' file='a.xml'/>"_s
                                     "<case cond='1' file='b.xml'/><case cond='B' file='c.xml'/>"
                                     "<default file='d.xml'/></include></archive>"_s},
                      {u"a.xml"_s, variable(u"A"_s)},
                      {u"b.xml"_s, variable(u"B"_s)},
                      {u"c.xml"_s, variable(u"C"_s)},
                      {u"d.xml"_s, variable(u"D"_s)}});
    EXPECT_EQ(filesOf(soc), QStringList({u"soc.xml"_s, u"b.xml"_s}));
    EXPECT_EQ(recordOf(soc.archiveAt(0).includes.at(0)), u"0:a.h 1:b.h B:c.h |d.h"_s);
    EXPECT_EQ(soc.warnings, QStringList());
}

TEST(Includes, DefaultIsLoadedWhenNoCaseHolds)
{
    const Loaded soc({{u"soc.xml"_s, u"<archive><include><case cond='0' file='a.xml'/><default file='sys/d.xmd'/>"_s
                                     "</include><include load='no' file='defs.h'/></archive>"_s},
                      {u"sys/d.xmd"_s, variable(u"D"_s)}});
    EXPECT_EQ(filesOf(soc), QStringList({u"soc.xml"_s, u"sys/d.xmd"_s}));
    EXPECT_EQ(recordOf(soc.archiveAt(0).includes.at(0)), u"0:a.h |d.h"_s);
    EXPECT_EQ(recordOf(soc.archiveAt(0).includes.at(1)), u"|defs.h"_s);
}

TEST(Includes, MissingFiles)
{
    const Loaded mandatory(u"<archive><include file='x/../no.xml'/><var name='V' value='1'/></archive>"_s);
    EXPECT_TRUE(mandatory.isLoaded());
    EXPECT_EQ(mandatory.warnings, QStringList({u"Unable to open file no.xml"_s, u"soc.xml:0:0:Skipped."_s}));
    EXPECT_EQ(mandatory.errors, QStringList());

    const Loaded optional(u"<archive><include file='no.xml' optional='yes'/></archive>"_s);
    EXPECT_TRUE(optional.isLoaded());
    EXPECT_EQ(optional.warnings, QStringList());

    // No file at all names a directory; only the last entry decides on "Skipped.".
    const Loaded none(u"<archive><include><case cond='0' file='a.xml'/></include></archive>"_s);
    EXPECT_EQ(none.warnings.size(), 2);
    EXPECT_EQ(none.warnings.value(1), u"soc.xml:0:0:Skipped."_s);
    const Loaded later(
        {{u"soc.xml"_s, u"<archive><include><case cond='1' file='no.xml'/><case cond='1' file='a.xml'/>"_s
                        "</include></archive>"_s},
         {u"a.xml"_s, variable(u"A"_s)}});
    EXPECT_EQ(later.warnings, QStringList(u"Unable to open file no.xml"_s));
}

TEST(Includes, EachFileIsReadOnceBySpelling)
{
    const Loaded soc({{u"chip/soc.xml"_s, u"<archive><include file='periph/a.xml'/><include file='../common/c.xml'/>"_s
                                          "<include file='periph//./b.xml'/></archive>"_s},
                      {u"chip/periph/a.xml"_s, u"<archive><include file='b.xml'/></archive>"_s},
                      {u"chip/periph/b.xml"_s, u"<archive><include file='../../common/c.xml'/></archive>"_s},
                      {u"common/c.xml"_s, variable(u"C"_s)}});
    EXPECT_EQ(filesOf(soc), QStringList({u"soc.xml"_s, u"periph/a.xml"_s, u"periph/b.xml"_s, u"../common/c.xml"_s}));
    EXPECT_EQ(soc.logs,
              QStringList({u"Loading chip/soc.xml..."_s, u"Loading chip/periph/a.xml..."_s,
                           u"Loading chip/periph/b.xml..."_s, u"Loading common/c.xml..."_s, u"Chip soc loaded."_s}));
    EXPECT_EQ(soc.archiveAt(0).includedArchives.size(), 3);
    EXPECT_EQ(soc.archiveAt(3).getTotalPath(), soc.path(u"common/c.xml"_s));
}

TEST(Includes, CirclesAndSelves)
{
    const Loaded soc(
        {{u"soc.xml"_s, u"<archive><var name='S' value='2'/><include file='a.xml'/><include file='soc.xml'/>"_s
                        "<var name='T' value='A+S'/></archive>"_s},
         {u"a.xml"_s, u"<archive><include file='soc.xml'/><var name='A' value='S+1'/></archive>"_s}});
    ASSERT_TRUE(soc.isLoaded()) << soc.errors.join(u'|').toStdString();
    EXPECT_EQ(soc.archiveAt(0).variables->last().leftValue, 5);

    Files chain = {{u"soc.xml"_s, u"<archive><include file='1.xml'/></archive>"_s}};
    for (int at = 1; at < 200; ++at)
        chain.push_back(
            {u"%1.xml"_s.arg(at), u"<archive><include file='%1.xml' optional='yes'/></archive>"_s.arg(at + 1)});
    EXPECT_EQ(Loaded(chain).root().xmlArchives.size(), 200);

    // A file that calls itself by another name is new at every include.
    const Loaded endless(u"<archive relative='other.xml'><include file='soc.xml'/></archive>"_s);
    EXPECT_FALSE(endless.isLoaded());
    EXPECT_EQ(endless.errors, QStringList(u"other.xml:1:55:Files are included more than 256 deep."_s));
}

TEST(Includes, FailureInsideNamesItsFile)
{
    const Loaded soc({{u"soc.xml"_s, u"<archive><include file='sub/a.xml'/></archive>"_s},
                      {u"sub/a.xml"_s, u"<archive><include file='b.xml'/></archive>"_s},
                      {u"sub/b.xml"_s, u"<archive>\n\n <!-- größe --><var/>\n</archive>"_s}});
    EXPECT_FALSE(soc.isLoaded());
    EXPECT_EQ(soc.errors, QStringList(u"sub/b.xml:3:21:A variable of the archive 'b' has no name!"_s));
}

TEST(Includes, BigArchivesHoldSeveralFiles)
{
    const Loaded soc({{u"soc.xml"_s, u"<BigArchive><archive relative='x/a.xml'><var name='A' value='1'/></archive>"_s
                                     "<archive relative='x/b.xml' asm='no' vhdlpkg='p'><include file='a.xml'/>"
                                     "<var name='B' value='A'/></archive></BigArchive>"_s}});
    ASSERT_TRUE(soc.isLoaded()) << soc.errors.join(u'|').toStdString();
    EXPECT_EQ(filesOf(soc), QStringList({u"x/a.xml"_s, u"x/b.xml"_s}));
    EXPECT_TRUE(soc.archiveAt(0).generateAsm && !soc.archiveAt(1).generateAsm);
    EXPECT_EQ(soc.archiveAt(1).getVHDLFileRelativeName(), u"x/p.vhd"_s);
    EXPECT_EQ(soc.archiveAt(0).getVHDLFileRelativeName(), u"x/a_reg_pkg.vhd"_s);
    EXPECT_EQ(soc.archiveAt(0).getASMFileRelativeName(), u"x/a_asm.h"_s);

    const Loaded foreign(u"<bigarchive><archive/><Module/></bigarchive>"_s);
    EXPECT_EQ(foreign.errors, QStringList(u"soc.xml:1:31:Unvalid 'module' tag.\n"_s));
    const Loaded empty(
        {{u"soc.xml"_s, u"<archive><include file='e.xml'/></archive>"_s}, {u"e.xml"_s, u"<bigarchive/>"_s}});
    EXPECT_TRUE(empty.isLoaded());
    EXPECT_FALSE(Loaded(u"<bigarchive/>"_s).isLoaded());
}

TEST(Includes, NamesAreSeenAlongThem)
{
    struct Row {
        const char *what;
        Files files;
        int value; ///< of the last variable of the root file, 0 where it has none
    };
    const auto file = [](const QString &name, const QString &content) {
        return std::pair(name, u"<archive>"_s + content + u"</archive>"_s);
    };
    const QString a = u"<include file='a.xml'/>"_s;
    const QString b = u"<include file='b.xml'/>"_s;
    const QString x = u"<var name='X' value='%1'/>"_s;
    const QString use = u"<var name='U' value='X'/>"_s;
    const Row rows[] = {
        {"in the file itself", {file(u"soc.xml"_s, x.arg(1) + use)}, 1},
        {"two files further", {file(u"soc.xml"_s, a + use), file(u"a.xml"_s, b), file(u"b.xml"_s, x.arg(2))}, 2},
        {"behind the use alone", {file(u"soc.xml"_s, use + a), file(u"a.xml"_s, x.arg(3))}, 0},
        {"in a file that only another one includes",
         {file(u"soc.xml"_s, a + b), file(u"a.xml"_s, x.arg(4)), file(u"b.xml"_s, use)},
         0},
        {"in two, of which the last counts",
         {file(u"soc.xml"_s, a + b + use), file(u"a.xml"_s, x.arg(5)), file(u"b.xml"_s, x.arg(6))},
         6},
        {"in an include and in the file", {file(u"soc.xml"_s, x.arg(7) + a + use), file(u"a.xml"_s, x.arg(8))}, 8},
        {"in one that a file without sight of it has too",
         {file(u"soc.xml"_s, a + b + use), file(u"a.xml"_s, x.arg(9)),
          file(u"b.xml"_s, u"<var name='Y' value='1'/>"_s)},
         9},
        {"as a global variable",
         {file(u"soc.xml"_s, a + b + use), file(u"a.xml"_s, u"<var name='X' value='10' global='yes'/>"_s),
          file(u"b.xml"_s, x.arg(11))},
         10},
        {"in a file that includes the one that is being read",
         {file(u"soc.xml"_s, a + use), file(u"a.xml"_s, u"<include file='soc.xml'/>"_s + b),
          file(u"b.xml"_s, x.arg(12))},
         12},
        {"through a file that is still being read",
         {file(u"soc.xml"_s, b + a), file(u"a.xml"_s, u"<include file='soc.xml'/>"_s + use),
          file(u"b.xml"_s, x.arg(13))},
         -1},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        const Loaded soc(row.files);
        const VMIntVar *used = nullptr;
        for (const VMXMLArchive *archive : soc.isLoaded() ? soc.root().xmlArchives : QList<VMXMLArchive *>()) {
            if (const VMIntVar *found = archive->variables->findVariable(u"U"_s))
                used = found;
        }
        EXPECT_EQ(used ? used->leftValue : 0, row.value < 0 ? 13 : row.value) << soc.errors.join(u'|').toStdString();
    }
}
