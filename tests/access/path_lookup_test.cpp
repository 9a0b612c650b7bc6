#include "access/completion.h"
#include "model/aggregates.h"
#include "model/pointer.h"
#include "model/valuable.h"
#include "support/loaded.h"

#include <algorithm>
#include <functional>

#include <QThread>

using namespace Qt::StringLiterals;

namespace {

const QString kTypes = QStringLiteral(R"xml(<archive>
    <typedef name="node"><ptr name="next" type="node"/><uint8 name="data"/></typedef>
    <typedef name="row"><uint16 name="val"/></typedef>
    <alias name="rows"><instance name="row" type="row" count="4"/></alias>
    <module name="block">
        <reg32 name="ctrl" protect="rw"><bits name="enable" pos="0" access="rw"/>
            <bitgroup name="all"><entry ref="enable"/></bitgroup></reg32>
        <hole size="32"/>
        <instance name="table" type="row" count="4"/>
        <ptr name="head" type="node"/>
        <ptr name="list" type="rows"/>
        <ptr name="lost" type="nothing"/>
        <memory name="ram" size="8"/>
    </module>
    <instance name="top" type="block" address="0x1000"/>
    <instance name="table" type="rows" address="0x2000"/>
    <instance name="top" type="block" address="0x3000"/>
    <instance name="a.b" type="row" address="0x4000"/>
</archive>)xml");

/// "kind of name at address" of what \a path names, or "-".
QString found(const Loaded &soc, const QString &path)
{
    const VMXMLElement *element = soc.map->getElementFromPath(path);
    return element ? element->getPath() + u" @"_s + QString::number(element->getBaseAddress(), 16) : u"-"_s;
}

} // namespace

TEST(PathLookup, EveryForm)
{
    expectCases(u"access/paths.txt"_s, [](const Loaded &soc, const QStringList &words) {
        // A description gives pointers no bitfields; a host may.
        auto *head = elementCast<VMPointer>(soc.map->getElementFromPath(u"$top.head"_s));
        if (head->bitFields.empty())
            head->addBitField(new VMBitField(u"tag"_s, true, 1, {}, 0, {}, 0, 0, false, DISPLAY_HEX));
        return found(soc, words.value(1));
    });
}

TEST(PathLookup, PointedElementIsMadeOnceAndFollowsTheValue)
{
    const Loaded soc(kTypes);
    auto *head = elementCast<VMPointer>(soc.map->getElementFromPath(u"$top.head"_s));
    ASSERT_TRUE(head);
    EXPECT_FALSE(head->pointedElement);
    const VMXMLElement *pointed = soc.map->getElementFromPath(u"$top.head.>"_s);
    EXPECT_EQ(pointed, head->pointedElement.get());
    EXPECT_EQ(soc.map->getElementFromPath(u"$top.head.>"_s), pointed);
    head->setReadError(true);
    EXPECT_TRUE(pointed->readError);
    head->setValue(0x20000000);
    EXPECT_EQ(found(soc, u"$top.head.>.data"_s), u"$top.head.>.data @20000004"_s);
}

TEST(PathLookup, TheChipComesBeforeTheSoftware)
{
    const Loaded chip(kTypes);
    Loaded soft = Loaded::archive(QStringLiteral(R"(<module name="m"><uint32 name="only"/></module>
        <instance name="top" type="m" address="0x9000"/>)"));
    chip.map->softRootArchive = std::exchange(soft.map->chipRootArchive, nullptr);
    EXPECT_EQ(found(chip, u"$top"_s), u"$top @1000"_s);
    EXPECT_EQ(found(chip, u"$top.only"_s), u"$top.only @9000"_s); // no answer from the chip
    std::swap(chip.map->chipRootArchive, chip.map->softRootArchive);
    EXPECT_EQ(found(chip, u"$top"_s), u"$top @9000"_s);
    delete std::exchange(chip.map->softRootArchive, nullptr);
    EXPECT_EQ(found(chip, u"$table"_s), u"-"_s);
}

TEST(PathLookup, PathsLeadBackToTheirElements)
{
    Loaded chip(kTypes);
    Loaded soft = Loaded::archive(QStringLiteral(R"xml(
        <typedef name="cell"><uint8 name="lo" count="2"/><ptr name="up" type="cell"/></typedef>
        <alias name="grid"><instance name="row" type="cell" count="3"/></alias>
        <alias name="grids"><instance name="grids" type="grid" count="2"/></alias>
        <module name="task"><instance name="map" type="grid" count="2"/><ptr name="maps" type="grids"/>
            <uint8 name="twin"/><uint16 name="twin"/></module><instance name="task" type="task"/>)xml"));
    ASSERT_TRUE(soft.isLoaded()) << soft.errors.join(u'|').toStdString();
    for (const char *path : {"$task.map[1][2].up.>.up.>", "$task.maps.>[1][2].lo[1]"})
        EXPECT_TRUE(soft.map->getElementFromPath(QString::fromUtf8(path))) << path; // makes what is behind the pointers

    const auto isException = [&](const VMXMLElement &element) {
        const QString path = element.getPath();
        const bool isOfTopLevelArray = element.arrayNumber >= 0 && element.parent->isInstance(); // it has no dot
        const bool isSecond = path.startsWith(u"$top"_s) && element.getBaseAddress() >= 0x3000;
        const bool isSecondMember = path == u"$task.twin"_s && element.sizeOf() == 2;
        const bool hasDot = path.startsWith(u"$a.b"_s);
        return path.isEmpty() || isOfTopLevelArray || isSecond || isSecondMember || hasDot; // holes have no path
    };
    int elements = 0;
    int exceptions = 0;
    const std::function<void(VMXMLElement &)> walk = [&](VMXMLElement &element) {
        ++elements;
        exceptions += isException(element) ? 1 : 0;
        EXPECT_EQ(soft.map->getElementFromPath(element.getPath()) == &element, !isException(element))
            << element.getPath().toStdString();
        if (auto *structure = elementCast<VMStruct>(&element))
            std::ranges::for_each(structure->memberList, [&](auto &member) { walk(*member); });
        if (auto *array = elementCast<VMArray>(&element))
            std::ranges::for_each(array->memberList, [&](auto &member) { walk(*member); });
        if (auto *pointer = elementCast<VMPointer>(&element); pointer && pointer->pointedElement)
            walk(*pointer->pointedElement);
        if (auto *valuable = elementCast<VMValuable>(&element))
            std::ranges::for_each(valuable->bitFields, [&](auto &field) { walk(*field); });
    };
    // The chip's tree as the software of its map: the answers are the same.
    soft.map->softRootArchive = std::exchange(chip.map->chipRootArchive, nullptr);
    for (VMRootArchive *root : {soft.map->chipRootArchive, soft.map->softRootArchive})
        std::ranges::for_each(root->instances, [&](auto &instance) { walk(*instance); });
    EXPECT_GT(elements, 100);
    EXPECT_GT(exceptions, 5);
}

TEST(PathLookup, PathsOfAnyLength)
{
    const Loaded soc(kTypes);
    const auto followed = [&](int times) {
        return soc.map->getElementFromPath(u"$top.head.>"_s + u".next.>"_s.repeated(times));
    };
    EXPECT_TRUE(followed(1000));
    EXPECT_FALSE(followed(3000));
    EXPECT_FALSE(followed(1'000'000));
    EXPECT_TRUE(soc.map->getElementFromPath(u"$top.ctrl.enable"_s + QString(10'000'000, u'.')));
    EXPECT_FALSE(soc.map->getElementFromPath(QString(10'000'000, u'.')));
    EXPECT_FALSE(soc.map->getElementFromPath(u'$' + QString(10'000'000, u'x') + u".y"_s));
    EXPECT_TRUE(soc.map->getCompletionListFromPath(u'$' + QString(10'000'000, u'.')).isEmpty());

    // A type of 100,000 elements that points to itself: the steps end when a load's worth of elements lies behind.
    const Loaded large = Loaded::archive(QStringLiteral(R"xml(<typedef name="large"><ptr name="next" type="large"/>
        <uint8 name="a" count="100000"/></typedef><instance name="L" type="large"/>)xml"));
    EXPECT_TRUE(large.map->getElementFromPath(QStringLiteral("$L.next.>.next.>.next.>")));
    EXPECT_FALSE(large.map->getElementFromPath(QStringLiteral("$L.next.>.next.>.next.>.next.>")));

    // One that is larger than any chain may be can still be looked at.
    const Loaded larger = Loaded::archive(QStringLiteral(R"xml(<typedef name="larger"><ptr name="next" type="larger"/>
        <uint8 name="a" count="150000"/><uint8 name="b" count="150000"/></typedef>
        <module name="m"><ptr name="p" type="larger"/></module><instance name="I" type="m"/>)xml"));
    EXPECT_TRUE(larger.map->getElementFromPath(QStringLiteral("$I.p.>.b[149999]")));
    EXPECT_FALSE(larger.map->getElementFromPath(QStringLiteral("$I.p.>.next.>")));
}

TEST(PathLookup, LongChainsTakeNoStack)
{
    const Loaded soc(kTypes);
    const QString path = QStringLiteral("$top.head.>") + QStringLiteral(".next.>").repeated(2047);
    const VMXMLElement *found = nullptr;
    const VMXMLElement *beyond = nullptr;
    qsizetype candidates = 0;
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        found = soc.map->getElementFromPath(path);
        beyond = soc.map->getElementFromPath(path + QStringLiteral(".next.>"));
        candidates = soc.map->getCompletionListFromPath(path + u'.').size();
    }));
    thread->setStackSize(64 * 1024);
    thread->start();
    thread->wait();
    EXPECT_TRUE(found);
    EXPECT_FALSE(beyond); // the 2049th step
    EXPECT_EQ(candidates, 2);
}

TEST(PathLookup, MembersOfOneNameAreAskedInOrder)
{
    const Loaded soc = Loaded::archive(QStringLiteral(R"xml(<module name="m">
        <struct name="s"><ptr name="p" type="uint8"/></struct><struct name="s"><ptr name="p" type="pair"/></struct>
        <struct name="s"><struct name="p"/></struct></module>
        <typedef name="pair"><uint8 name="a"/><uint8 name="b"/></typedef>
        <instance name="I" type="m"/>)xml"));
    const auto at = [&](const char *path) { return soc.map->getElementFromPath(QString::fromUtf8(path)); };
    const auto &instance = *elementCast<VMStruct>(soc.root().instances.at(0).get());
    EXPECT_EQ(at("$I.s"), instance.memberList.at(0).get());
    ASSERT_TRUE(at("$I.s.p.>.b")); // the first pointer leads nowhere there
    EXPECT_EQ(at("$I.s.p.>.b")->parent->parent->parent, instance.memberList.at(1).get());
    EXPECT_EQ(at("$I.s.p.x"), nullptr);
}
