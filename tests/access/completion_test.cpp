#include "access/completion.h"
#include "model/aggregates.h"
#include "model/pointer.h"
#include "model/scalars.h"
#include "support/loaded.h"

using namespace Qt::StringLiterals;

namespace {

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
    expectCases(u"access/lists.txt"_s, [](const Loaded &soc, const QStringList &words) {
        // A description gives pointers no bitfields; a host may.
        auto *head = elementCast<VMPointer>(soc.map->getElementFromPath(u"$B.head"_s));
        if (head->bitFields.empty())
            head->addBitField(new VMBitField(u"tag"_s, true, 1, u"0"_s, 0, u"0"_s, 0, 0, false, DISPLAY_HEX));
        return listed(*soc.map, words.value(1));
    });
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
    const Loaded chip =
        Loaded::archive(uR"(<typedef name="node"/><alias name="nodes"><instance name="n" type="node" count="2"/></alias>
        <instance name="B" type="node"/><instance name="A" type="nodes"/>)"_s);
    Loaded soft = Loaded::archive(uR"(<module name="m"><int16 name="only"/></module>
        <instance name="B" type="m" address="0"/>)"_s);
    chip.map->softRootArchive = std::exchange(soft.map->chipRootArchive, nullptr);
    EXPECT_EQ(listed(*chip.map, u"$B."_s), u"only:8"_s);
    EXPECT_EQ(listed(*chip.map, u"$"_s), u"$A:15 $B:14"_s);
}
