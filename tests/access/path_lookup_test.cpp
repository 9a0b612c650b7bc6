#include "access/completion.h"
#include "model/aggregates.h"
#include "model/pointer.h"
#include "model/valuable.h"
#include "support/loaded.h"

#include <algorithm>
#include <functional>

#include <QThread>

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
QString found(const Loaded &soc, const char *path)
{
    const VMXMLElement *element = soc.map->getElementFromPath(QString::fromUtf8(path));
    return element ? element->getPath() + QStringLiteral(" @") + QString::number(element->getBaseAddress(), 16)
                   : QStringLiteral("-");
}

} // namespace

TEST(PathLookup, EveryForm)
{
    const Loaded soc(kTypes);
    ASSERT_TRUE(soc.isLoaded()) << soc.errors.join(u'|').toStdString();
    // A description gives pointers no bitfields; a host may.
    auto *head = elementCast<VMPointer>(soc.map->getElementFromPath(QStringLiteral("$top.head")));
    head->addBitField(new VMBitField(QStringLiteral("tag"), true, 1, {}, 0, {}, 0, 0, false, DISPLAY_HEX));
    const struct {
        const char *path;
        const char *element;
    } rows[] = {
        {"$top", "$top @1000"}, // the first of two
        {"$top.ctrl", "$top.ctrl @1000"},
        {"$top.ctrl.enable", "$top.ctrl.enable @1000"},
        {"$top.ctrl.enable.xyz", "$top.ctrl.enable @1000"}, // what stands behind a bitfield is not looked at
        {"$top.ctrl.all", "-"},                             // a bitgroup is no element
        {"$top.Reserved_00000004_32", " @1004"},
        {"$top.table", "$top.table @1008"},
        {"$top.table.xyz", "$top.table @1008"}, // an array that knows its name looks no further
        {"$top.table[3]", "$top.table[3] @100e"},
        {"$top.table[3].val", "$top.table[3].val @100e"},
        {"$top.table[4].val", "-"},
        {"$top.table[99999999999999999999]", "-"},
        {"$top.ram", "$top.ram @101c"},
        {"$top.ram.x", "-"},
        {"$table", "$table @2000"},
        {"$table[3]", "-"}, // a top-level name alone is that of an instance
        {"$table[3].val", "$table[3].val @2006"},
        {"$table.xyz", "$table @2000"},
        {"$top.head.tag", "-"}, // no path leads to the bitfields of a pointer
        {"$top.head.>", "$top.head.> @0"},
        {"$top.head.>.next.>.data", "$top.head.>.next.>.data @4"},
        {"$top.list.>[2]", "$top.list.>[2] @4"},
        {"$top.list.>[2].val", "$top.list.>[2].val @4"},
        {"$top.list.>.xyz", "$top.list.> @0"},
        {"$top.head.>[0]", "-"}, // what it points to is no array
        {"$top.lost.>", "-"},
        {"$top.head.>x", "-"},
        {"", "-"},
        {".", "-"},
        {"$", "-"},
        {"top", "-"},
        {"top.ctrl", "-"},
        {".ctrl", "-"},
        {"$top.", "-"},
        {"$top.ctrl.", "-"},
        {"$top.CTRL", "-"},
        {"$$top.ctrl", "-"},
        {"$a.b", "-"},
        {"$archive.block", "-"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(found(soc, row.path).toStdString(), row.element) << row.path;
}

TEST(PathLookup, PointedElementIsMadeOnceAndFollowsTheValue)
{
    const Loaded soc(kTypes);
    auto *head = elementCast<VMPointer>(soc.map->getElementFromPath(QStringLiteral("$top.head")));
    ASSERT_TRUE(head);
    EXPECT_FALSE(head->pointedElement);
    const VMXMLElement *pointed = soc.map->getElementFromPath(QStringLiteral("$top.head.>"));
    EXPECT_EQ(pointed, head->pointedElement.get());
    EXPECT_EQ(soc.map->getElementFromPath(QStringLiteral("$top.head.>")), pointed);
    head->setReadError(true);
    EXPECT_TRUE(pointed->readError);
    head->setValue(0x20000000);
    EXPECT_EQ(found(soc, "$top.head.>.data"), QStringLiteral("$top.head.>.data @20000004"));
}

TEST(PathLookup, TheChipComesBeforeTheSoftware)
{
    const Loaded chip(kTypes);
    Loaded soft = Loaded::archive(QStringLiteral(R"(<module name="m"><uint32 name="only"/></module>
        <instance name="top" type="m" address="0x9000"/>)"));
    chip.map->softRootArchive = std::exchange(soft.map->chipRootArchive, nullptr);
    EXPECT_EQ(found(chip, "$top"), QStringLiteral("$top @1000"));
    EXPECT_EQ(found(chip, "$top.only"), QStringLiteral("$top.only @9000")); // no answer from the chip
    std::swap(chip.map->chipRootArchive, chip.map->softRootArchive);
    EXPECT_EQ(found(chip, "$top"), QStringLiteral("$top @9000"));
    delete std::exchange(chip.map->softRootArchive, nullptr);
    EXPECT_EQ(found(chip, "$table"), QStringLiteral("-"));
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
        const bool isSecond = path.startsWith(QStringLiteral("$top")) && element.getBaseAddress() >= 0x3000;
        const bool isSecondMember = path == QStringLiteral("$task.twin") && element.sizeOf() == 2;
        const bool hasDot = path.startsWith(QStringLiteral("$a.b"));
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
        return soc.map->getElementFromPath(QStringLiteral("$top.head.>") + QStringLiteral(".next.>").repeated(times));
    };
    EXPECT_TRUE(followed(1000));
    EXPECT_FALSE(followed(3000));
    EXPECT_FALSE(followed(1'000'000));
    EXPECT_TRUE(soc.map->getElementFromPath(QStringLiteral("$top.ctrl.enable") + QString(10'000'000, u'.')));
    EXPECT_FALSE(soc.map->getElementFromPath(QString(10'000'000, u'.')));
    EXPECT_FALSE(soc.map->getElementFromPath(u'$' + QString(10'000'000, u'x') + QStringLiteral(".y")));
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
