// What a large tree keeps once: texts, lists of options, and the insides of instances that nobody asks for.

#include "support/loaded.h"

#include "findings/finding.h"
#include "loading/load.h"
#include "model/aggregates.h"
#include "model/scalars.h"
#include "model/valuable.h"

using namespace Qt::StringLiterals;

namespace {

bool isSameStorage(const QString &one, const QString &other)
{
    return one == other && one.constData() == other.constData();
}

const VMValuable &memberAt(const VMStruct &structure, std::size_t place)
{
    return *elementCast<VMValuable>(structure.memberList.at(place).get());
}

} // namespace

TEST(SharedTexts, NearlyAllAreOneHoweverManyThereAre)
{
    constexpr int kRegisters = 3000;
    QString registers;
    for (int number = 0; number < kRegisters; ++number)
        registers += u"<reg name='r-%1'><comment>a &lt; %1</comment></reg>"_s.arg(number);
    const Loaded soc = Loaded::archive(u"<module name='m'>"_s + registers + u"</module><module name='n'>"_s +
                                       registers + u"</module>"_s);
    const auto &m = soc.type<VMStruct>(u"m"_s);
    const auto &n = soc.type<VMStruct>(u"n"_s);
    int shared = 0;
    for (std::size_t place = 0; place < kRegisters; ++place) {
        const VMValuable &one = memberAt(m, place);
        const VMValuable &other = memberAt(n, place);
        ASSERT_EQ(one.name, u"r_"_s + QString::number(place));
        ASSERT_EQ(one.comment, u"a &lt; "_s + QString::number(place));
        ASSERT_EQ(one.comment, other.comment);
        EXPECT_EQ(one.comment.capacity(), one.comment.size());
        shared += isSameStorage(one.name, other.name) ? 1 : 0;
    }
    EXPECT_GT(shared, kRegisters / 2); // some had to make room
}

TEST(SharedTexts, ElementsShareWhatIsAlike)
{
    const auto reg = u"'><comment>Control of it all</comment><bits name='run' pos='N:N-1' access='rw'>"_s
                     "<comment>starts the machine</comment><options linkenum='e'/></bits></reg>";
    const Loaded soc = Loaded::archive(
        u"<var name='N' value='7'/><enum name='e'><entry name='on'/></enum><module name='m'><reg name='a"_s + reg +
        u"<reg name='b"_s + reg + u"</module>"_s);
    const auto &module = soc.type<VMStruct>(u"m"_s);
    const VMValuable &a = memberAt(module, 0);
    const VMValuable &b = memberAt(module, 1);
    EXPECT_TRUE(isSameStorage(a.comment, b.comment));
    const VMBitField &ofA = *a.bitFields.at(0);
    const VMBitField &ofB = *b.bitFields.at(0);
    for (const auto text : {&VMBitField::upPosExpression, &VMBitField::downPosExpression,
                            &VMBitField::physicalUpPosExpression, &VMBitField::physicalDownPosExpression})
        EXPECT_TRUE(isSameStorage(ofA.*text, ofB.*text)) << (ofA.*text).toStdString();
    EXPECT_TRUE(isSameStorage(ofA.name, ofB.name));
    EXPECT_TRUE(isSameStorage(ofA.comment, ofB.comment));
    EXPECT_EQ(ofA.options.optionList.constData(), ofB.options.optionList.constData());
}

TEST(SharedTexts, CopiesOfAnArrayHaveItsNames)
{
    const Loaded soc = Loaded::archive(u"<module name='m'><reg name='r' count='12'/></module>"_s
                                       "<instance name='I' type='m'/>");
    const auto &declared = *elementCast<VMArray>(soc.type<VMStruct>(u"m"_s).memberList.at(0).get());
    const auto *instance = elementCast<VMStruct>(soc.root().instances.at(0).get());
    auto &copied = *elementCast<VMArray>(instance->memberList.at(0).get());
    EXPECT_TRUE(isSameStorage(declared.memberList.at(11)->name, copied.memberList.at(11)->name));
    copied.setName(u"other"_s);
    EXPECT_EQ(copied.memberList.at(0)->name, u"other[0]"_s);
    EXPECT_EQ(copied.memberList.at(11)->name, u"other[11]"_s);
    EXPECT_EQ(declared.memberList.at(11)->name, u"r[11]"_s);
}

TEST(SharedTexts, OutlinesTellWhereInstancesLie)
{
    const Loaded soc = Loaded::archive(
        u"<module name='m'><hole/><reg name='a'/><reg name='b' count='2'/><reg8 name='c'/><hole size='8'/></module>"_s
        "<module name='gap'><hole/></module><alias name='list'><reg name='u' count='3'/></alias>"
        "<instance name='I' type='m' address='16'/><instance name='G' type='gap'/><instance name='L' type='list'/>");
    veldmap::FindingList told;
    VMMemoryMap map;
    const std::unique_ptr<VMRootArchive> outlined =
        veldmap::loadRoot(map, soc.path(u"soc.xml"_s), true, told, {.outlines = true});
    ASSERT_TRUE(outlined);
    ASSERT_EQ(outlined->instances.size(), soc.root().instances.size());
    for (std::size_t place = 0; place < outlined->instances.size(); ++place) {
        const VMXMLElement &outline = *outlined->instances[place];
        const VMXMLElement &whole = *soc.root().instances[place];
        EXPECT_EQ(outline.getName(), whole.getName());
        EXPECT_EQ(outline.getTypeString(), whole.getTypeString());
        EXPECT_EQ(outline.sizeOf(), whole.sizeOf());
        EXPECT_EQ(outline.getAlignConstraint(), whole.getAlignConstraint());
        EXPECT_EQ(outline.getBaseAddress(), whole.getBaseAddress());
        EXPECT_EQ(outline.source.line, whole.source.line);
    }
    const auto &members = elementCast<VMStruct>(outlined->instances[0].get())->memberList;
    ASSERT_EQ(members.size(), 2u);
    EXPECT_EQ(members[0]->getBaseAddress(), 20u);
    EXPECT_EQ(members[0]->sizeOf(), 4);
    EXPECT_EQ(members[1]->getBaseAddress(), 32u);
    EXPECT_EQ(members[1]->sizeOf(), 1);
}

TEST(SharedTexts, ElementsTakeNoMoreThanTheirMembers)
{
    EXPECT_EQ(sizeof(VMBitField), sizeof(VMXMLElement) + 144);
    EXPECT_EQ(sizeof(VMRegister32), sizeof(VMXMLElement) + 128);
}
