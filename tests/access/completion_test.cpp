#include "access/completion.h"
#include "model/aggregates.h"
#include "model/pointer.h"
#include "model/scalars.h"
#include "support/loaded.h"

using namespace Qt::StringLiterals;

namespace {

const QString kDescription = uR"xml(<archive>
    <typedef name="node"><uint8 name="data"/></typedef>
    <alias name="nodes"><instance name="n" type="node" count="2"/></alias>
    <module name="block">
        <reg32 name="open" protect="rw"><comment>both ways</comment>
            <bits name="w" pos="0" access="rw"><comment>hidden by the operation</comment></bits>
            <bits name="plain" pos="1" access="rw"/><bits name="fixed" pos="2" access="r"/>
            <bits name="act" pos="3" access="s"/><bits name="ack" pos="4" access="rc"/></reg32>
        <reg16 name="shut"/>
        <hole size="16"/><memory name="ram" size="4"/>
        <instance name="table" type="node" count="3"/>
        <ptr name="head" type="node"/>
        <ptr name="many" type="nodes"/>
        <ptr name="any" type="void"/>
        <struct name="inner"><bool name="flag"/></struct>
    </module>
    <instance name="B" type="block" address="0x1000"/><instance name="A" type="nodes" address="0x2000"/>
</archive>)xml"_s;

/// The list of \a path as "key:type ...".
QString listed(const VMMemoryMap &map, const QString &path)
{
    QStringList entries;
    const auto list = map.getCompletionListFromPath(path);
    for (auto entry = list.begin(); entry != list.end(); ++entry) {
        EXPECT_EQ(entry->name, entry.key());
        entries += entry.key() + u':' + QString::number(entry->type);
    }
    return entries.join(u' ');
}

} // namespace

TEST(Completion, CandidatesOfEachLevel)
{
    const Loaded soc(kDescription);
    ASSERT_TRUE(soc.isLoaded()) << soc.errors.join(u'|').toStdString();
    // A description gives pointers no bitfields; a host may.
    auto *head = elementCast<VMPointer>(soc.map->getElementFromPath(u"$B.head"_s));
    head->addBitField(new VMBitField(u"tag"_s, true, 1, u"0"_s, 0, u"0"_s, 0, 0, false, DISPLAY_HEX));
    const struct {
        QString path;
        QString list;
    } rows[] = {
        {u"$"_s, u"$A:15 $B:14"_s},
        {u"anything"_s, u"$A:15 $B:14"_s},
        {u""_s, u""_s},
        {u"B."_s, u""_s},
        {u"."_s, u""_s},
        {u"$C."_s, u""_s},
        {u"$B."_s, u"any:6 head:6 inner:14 many:6 open:1 shut:2 table:15"_s}, // no hole, no memory
        {u"$B.sh"_s, u"any:6 head:6 inner:14 many:6 open:1 shut:2 table:15"_s},
        {u"$B.inner."_s, u"flag:13"_s},
        {u"$B.table."_s, u""_s},
        {u"$B.table[2]."_s, u"data:12"_s},
        {u"$B.table[3]."_s, u""_s},
        {u"$B.table[+1]."_s, u""_s},
        {u"$B.table[]."_s, u""_s},
        {u"$B.table[1]x."_s, u""_s},
        {u"$B.table[4294967297]."_s, u""_s},
        {u"$B.Reserved_00000006_16."_s, u""_s},
        {u"$A."_s, u""_s}, // an array has no list of its own
        {u"$A[1]."_s, u""_s},
        {u"$B.head."_s, u">:0 R:0 address:0 doc:0 getl:0 prepl:0 r:0 setl:0 tag:5 w:0"_s},
        {u"$B.head.>."_s, u"data:12"_s},
        {u"$B.head.tag."_s, u"R:0 address:0 doc:0 r:0 rl:0 w:0 wl:0"_s},
        {u"$B.many.>."_s, u""_s},
        {u"$B.many.>[0]."_s, u""_s},
        {u"$B.any.>."_s, u"R:0 address:0 doc:0 getl:0 prepl:0 r:0 setl:0 w:0"_s},
        {u"$B.open.ack.x."_s, u""_s},
    };
    for (const auto &row : rows)
        EXPECT_EQ(listed(*soc.map, row.path), row.list) << row.path.toStdString();
}

TEST(Completion, EveryEntryWithItsTexts)
{
    const Loaded soc = Loaded::archive(uR"(<typedef name="node"><uint8 name="u8"/></typedef><module name="m">
        <reg32 name="open" protect="rw"><comment>both ways</comment><bits name="w" pos="0"/>
            <bits name="plain" pos="1" access="rw"><comment>a field</comment></bits><bits name="fixed" pos="2"/>
            <bits name="act" pos="3" access="s"/><bits name="ack" pos="4" access="rc"/></reg32>
        <reg16 name="shut"/><reg8 name="r8"/><ireg name="ir"/><int32 name="i32"/><int16 name="i16"/><int8 name="i8"/>
        <uint32 name="u32"/><uint16 name="u16"/><uint8 name="u8"/><bool name="b"/><ptr name="p" type="node"/>
        <struct name="s"><int8 name="in"/></struct><int8 name="a" count="2"/><hole/><memory name="ram" size="4"/>
        </module><instance name="I" type="m" address="0"/>)"_s);
    ASSERT_TRUE(soc.isLoaded()) << soc.errors.join(u'|').toStdString();
    // No description makes a void member; a host may.
    elementCast<VMStruct>(soc.root().instances.front().get())->addElement(new VMVoid(u"v"_s));
    QString text;
    for (const QString &path : {u"$"_s, u"$I."_s, u"$I.open."_s, u"$I.shut."_s, u"$I.p."_s, u"$I.open.plain."_s,
                                u"$I.open.fixed."_s, u"$I.open.act."_s, u"$I.open.ack."_s}) {
        text += path + u'\n';
        for (const CXMLCompletionEntry &entry : soc.map->getCompletionListFromPath(path))
            text +=
                QStringList{QString::number(entry.type), entry.name, entry.arguments, entry.result, entry.help}.join(
                    u" | "_s) +
                u'\n';
    }
    expectGolden(u"access/completion.txt"_s, text);
    EXPECT_EQ(soc.map->getCompletionListFromPath(u"$"_s).value(u"nothing"_s).type,
              CXMLCompletionEntry::COMPLETION_NONE);
}

TEST(Completion, TheSoftwareAnswersForANameInBothRoots)
{
    const Loaded chip(kDescription);
    Loaded soft = Loaded::archive(uR"(<module name="m"><int16 name="only"/></module>
        <instance name="B" type="m" address="0"/>)"_s);
    chip.map->softRootArchive = std::exchange(soft.map->chipRootArchive, nullptr);
    EXPECT_EQ(listed(*chip.map, u"$B."_s), u"only:8"_s);
    EXPECT_EQ(listed(*chip.map, u"$"_s), u"$A:15 $B:14"_s);
}
