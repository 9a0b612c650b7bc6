#include "support/loaded.h"

#include "findings/finding.h"
#include "loading/load.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// What a load of \a files tells that goes on after errors: "LINE: TEXT", and the reason of an expression in brackets.
QStringList told(const Files &files)
{
    const Loaded written(files);
    VMMemoryMap map;
    veldmap::FindingList list;
    EXPECT_EQ(veldmap::loadRoot(map, written.path(files.front().first), true, list, {.goesOn = true}), nullptr);
    QStringList texts;
    for (const veldmap::Finding &finding : list.findings) {
        if (finding.severity == veldmap::Severity::Note)
            continue;
        QString text = QString::number(finding.place.line) + ": "_L1 + finding.text().trimmed();
        text.replace(written.directory->path() + u'/', QString());
        texts += finding.note.isEmpty() ? text : text + " ["_L1 + finding.note + u']';
    }
    // The first error is the one that every load tells.
    const auto isError = [](const auto &finding) { return finding.severity == veldmap::Severity::Error; };
    const auto first = std::ranges::find_if(list.findings, isError);
    EXPECT_TRUE(first != list.findings.end() && written.errors.value(0).endsWith(first->text()));
    return texts;
}

QStringList told(const QString &content)
{
    return told(Files{{u"soc.xml"_s, u"<archive>\n"_s + content + u"</archive>"_s}});
}

} // namespace

TEST(SeveralErrors, EveryFaultOfOneFile)
{
    EXPECT_EQ(
        told(u"<var name='A' value='1+'/>\n"
             "<module name='m'><reg name='r'><bits name='f' pos='*'/><bits name='g' pos='0'/></reg>\n"
             "<reg/><foo/></module>\n"
             "<bar/><instance name='I' type='none'/>\n"_s),
        (QStringList{u"2: In archive 'soc', variable 'A' declaration : Error in expression of : A ['1+' has no value: "
                     "a number, a name or '(' is expected, at its end]"_s,
                     u"3: Valuable r, bitfield f, expression * : Error in expression of : * ['*' has no value: "
                     "a number, a name or '(' is expected, at its end]"_s,
                     u"4: Module contains an unamed reg"_s, u"4: Module contains an unvalid foo tag."_s,
                     u"5: Unvalid tag : 'bar'"_s,
                     u"5: Could not instanciate instance 'I' of type 'none'! (missing include or include not "
                     "valid?)"_s}));
}

// A name, type or field that a fault has kept from being declared is not told as unknown.
TEST(SeveralErrors, NothingThatOnlyFollows)
{
    EXPECT_EQ(
        told(u"<var name='A' value='0xFF+B'/><var name='C' value='A'/><var name='D' value='C+1'/>\n"
             "<range name='R' left='1' right=''/><enum name='e'><entry name='E' value='R'/><entry name='F'/></enum>\n"
             "<module name='m'><reg name='r' count='A'/><reg name='s'><bits name='f' pos='A'/><bitgroup name='g'>"
             "<entry ref='f'/></bitgroup><bits name='h' pos='F'><options linkenum='e'/></bits></reg></module>\n"
             "<alias name='w'><reg name='x' count='-1'/></alias><module name='n'><instance name='i' type='w'/>"
             "</module><instance name='M' type='m'/><instance name='N' type='n' address='D'/>"_s),
        (QStringList{u"2: In archive 'soc', variable 'A' declaration : Error in expression of : A ['0xFF+B' has no "
                     "value: the name 'B' is not known, at character 6]"_s,
                     u"3: The range 'R' misses left or right value!"_s,
                     u"5: Invalid '-1' array count of type 'reg' for array 'x'"_s}));
}

TEST(SeveralErrors, InIncludedFiles)
{
    const QStringList texts =
        told(Files{{u"soc.xml"_s, u"<archive><include file='a.xml'/><include file='no.xml'/><include file='b.xml'/>\n"
                                  "<var name='V' value='UNKNOWN'/><var name='W' value='OF_A+('/><foo/></archive>"_s},
                   {u"a.xml"_s, u"<archive>\n<var name='X' value=')'/><var name='OF_A' value='1'/></archive>"_s},
                   {u"b.xml"_s, u"<archive><module></archive>"_s}});
    EXPECT_EQ(texts, (QStringList{
                         u"2: In archive 'a', variable 'X' declaration : Error in expression of : X [')' has no value: "
                         "a number, a name or '(' is expected, at character 1]"_s,
                         u"0: Unable to open file no.xml [No such file or directory]"_s, u"0: Skipped."_s,
                         u"1: Opening and ending tag mismatch."_s,
                         // UNKNOWN may have been declared in the file that is not there.
                         u"2: In archive 'soc', variable 'W' declaration : Error in expression of : W ['OF_A+(' has no "
                         "value: a number, a name or '(' is expected, at its end]"_s,
                         u"2: Unvalid tag : 'foo'"_s}));
}

TEST(SeveralErrors, EachOnce)
{
    EXPECT_EQ(
        told(u"<foo/><var name='A' value='A+1'/><enum name='e'><entry name='Q' value='Q*2'/></enum>\n"
             "<module name='m'><reg name='r'><bits name='f'/><bitgroup name='g'><foo/></bitgroup><bitgroup name='h'>"
             "<entry ref='f'/><entry ref='g'/></bitgroup></reg><reg name='s'><bitgroup name='i'><entry ref='f'/>"
             "</bitgroup></reg></module>"_s)
            .size(),
        6); // foo, A, Q, f, g, and the f of s
    EXPECT_EQ(
        told(Files{{u"soc.xml"_s, u"<archive><include file='a.xml'/><include file='b.xml'/><include file='a.xml'/>"
                                  "<include file='b.xml'/></archive>"_s},
                   {u"a.xml"_s, u"<archive></archiv>"_s},
                   {u"b.xml"_s, u"<archive relative='c.xml'><foo/></archive>"_s}})
            .size(),
        2);
    // What stands behind a foreign tag is read all the same.
    EXPECT_EQ(
        told(
            u"<include file='a.xml' load='no'><foo/><case cond='('/></include><enum name='e'><entry name='E'/></enum>\n"
            "<module name='m'><memory name='m' size='4'><foo/><bar/></memory><ptr name='p' "
            "type='m'><foo/><bar/></ptr>\n"
            "<reg name='r'><bits name='f' pos='0'><foo/><options><foo/><option name='o'><foo/></option><option "
            "name='p' value='('/></options></bits><bits name='g' pos='1'><options linkenum='e'><option name='a'/>"
            "<option name='b'/><foo/></options></bits>\n"
            "<bitgroup name='g'><foo/><entry ref='none'/><entry ref='f'/></bitgroup></reg></module>"_s)
            .size(),
        14); // 2 of the include, 4 of memory and pointer, 6 of the register's fields, 2 of the group
    EXPECT_EQ(told(u"<include file='no.xml' optional='yes'/><foo/><instance name='I' type='t'/>"_s).size(), 2);
}

TEST(SeveralErrors, WhatLoadsOtherwiseLoads)
{
    const Loaded written(
        u"<archive><alias name='T'><instance name='x' type='none'/><reg name='r'/></alias></archive>"_s);
    ASSERT_TRUE(written.isLoaded());
    VMMemoryMap map;
    veldmap::FindingList list;
    EXPECT_TRUE(veldmap::loadRoot(map, written.path(u"soc.xml"_s), true, list, {.goesOn = true}));
    EXPECT_EQ(written.errors.size(), 1);
    const Loaded big(u"<bigarchive><foo/><archive/></bigarchive>"_s);
    EXPECT_FALSE(big.isLoaded());
    EXPECT_FALSE(veldmap::loadRoot(map, big.path(u"soc.xml"_s), true, list, {.goesOn = true}));
}

// Behind a limit all would be refused for the same reason.
TEST(SeveralErrors, ALimitEndsIt)
{
    EXPECT_EQ(
        told(u"<module name='m'><reg name='a' count='300000'/><reg name='b' count='300000'/></module><foo/>"_s).size(),
        1);
}
