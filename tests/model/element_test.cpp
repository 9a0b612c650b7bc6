// Places, paths and copies of elements.

#include "support/loaded.h"

#include "model/aggregates.h"
#include "model/kinds.h"
#include "model/pointer.h"
#include "model/scalars.h"

using namespace Qt::StringLiterals;

namespace {

const QString kModule = u"<typedef name='pair'><uint8 name='a'/><uint16 name='b'/></typedef><module name='m'>%1"
                        "</module><instance name='I' type='m' address='0x1000'/>"_s;

/// \a content as one module `m`, placed at 0x1000 as `I`.
Loaded placed(const QString &content)
{
    return Loaded::archive(kModule.arg(content));
}

const VMStruct &instanceOf(const Loaded &soc)
{
    return *elementCast<VMStruct>(soc.root().instances.at(0).get());
}

void collect(const VMXMLElement &element, QList<const VMXMLElement *> &all)
{
    all += &element;
    if (const auto *structure = elementCast<VMStruct>(&element)) {
        for (const auto &member : structure->memberList)
            collect(*member, all);
    } else if (const auto *array = elementCast<VMArray>(&element)) {
        collect(*array->prototype, all);
        for (const auto &member : array->memberList)
            collect(*member, all);
    } else if (const auto *valuable = elementCast<VMValuable>(&element)) {
        for (const auto &field : valuable->bitFields)
            collect(*field, all);
    }
}

} // namespace

TEST(Layout, MembersAlignAsInCAndSizesWrap)
{
    expectCases(
        u"model/tree.txt"_s,
        [](const Loaded &soc, const QStringList &) {
            QList<const VMXMLElement *> all;
            collect(instanceOf(soc), all);
            QString text;
            for (const VMXMLElement *element : all)
                text += u"%1 %2 @%3 +%4 |%5\n"_s.arg(
                    element->getPath().isEmpty() ? element->getName() : element->getPath(), element->getAddressString(),
                    QString::number(element->offset), QString::number(element->sizeOf()),
                    QString::number(element->getAlignConstraint()));
            return text;
        },
        kModule);
}

TEST(Paths, OfTypesAndMembers)
{
    const Loaded soc = placed(u"<reg name='r'/><struct name='s' count='2'><reg8 name='x'/></struct>"_s);
    EXPECT_EQ(soc.type<VMStruct>(u"m"_s).memberList.at(0)->getPath(), u"$archive..r"_s);
    const auto &array = *elementCast<VMArray>(instanceOf(soc).memberList.at(1).get());
    EXPECT_EQ(array.getMemberList(), QStringList({u"s[0]"_s, u"s[1]"_s}));
    EXPECT_EQ(array.memberList.at(1)->getRubyClassName(), u"CH__m__s__content"_s);
}

TEST(Paths, TopOfTheTree)
{
    const VMInt8 lone(u"lone"_s);
    EXPECT_EQ(lone.getPath(), u"$lone"_s);
    EXPECT_EQ(lone.getTopParent(), nullptr);
    EXPECT_EQ(lone.getRootArchive(), nullptr);
    EXPECT_TRUE(lone.isRootElement());
    EXPECT_FALSE(lone.isInstance());

    const Loaded soc = placed(u"<reg name='r'/>"_s);
    const auto &module = soc.type<VMStruct>(u"m"_s);
    EXPECT_TRUE(module.isRootElement() && !module.isInstance() && instanceOf(soc).isInstance());
    EXPECT_EQ(module.memberList.at(0)->getTopArchive(), &soc.archiveAt(0));
    EXPECT_EQ(instanceOf(soc).memberList.at(0)->getTopArchive(), nullptr);
    EXPECT_EQ(instanceOf(soc).memberList.at(0)->getRootArchive(), &soc.root());
    EXPECT_EQ(VMXMLElement::anonymousCopy(&soc.archiveAt(0)), nullptr);
}

TEST(Copies, ShareNothingAndCarryWhatTheyShould)
{
    const Loaded soc =
        placed(u"<reg16 name='h' protect='rw'><l name='lo'/><h name='hi'/><bits name='a' pos='3:0' cut='2'>"_s
               "<options><option name='o' value='1'/><mask/></options></bits></reg16>"
               "<ptr name='p' type='pair'/><uint8 name='u' count='2'/>"_s);
    const auto *source = elementCast<VMStruct>(soc.root().instances.at(0).get());
    elementCast<VMValuable>(source->memberList.at(0).get())->setValue(0x1234);
    elementCast<VMArray>(source->memberList.at(2).get())->memberList.at(1)->setName(u"odd"_s);
    auto *pointer = elementCast<VMPointer>(source->memberList.at(1).get());
    pointer->allocatePointedElement();
    pointer->innerData = u"text"_s;

    const std::unique_ptr<VMXMLElement> owner(VMXMLElement::anonymousCopy(source));
    const auto *copy = elementCast<VMStruct>(owner.get());
    QList<const VMXMLElement *> sourceElements;
    QList<const VMXMLElement *> copyElements;
    collect(*source, sourceElements);
    collect(*copy, copyElements);
    ASSERT_EQ(copyElements.size(), sourceElements.size());
    for (const VMXMLElement *element : copyElements) {
        EXPECT_FALSE(sourceElements.contains(element));
        EXPECT_TRUE(element == copy || copyElements.contains(element->parent));
    }
    const auto *reg = elementCast<VMValuable>(copy->memberList.at(0).get());
    EXPECT_EQ(reg->getValue(), 0x1234u);
    EXPECT_EQ(reg->lowName, QString());
    EXPECT_EQ(reg->physicalName, u"3"_s);
    ASSERT_EQ(reg->bitGroups.size(), 1u);
    EXPECT_EQ(reg->bitGroups.at(0)->valuable, reg);
    EXPECT_EQ(reg->bitGroups.at(0)->at(1), reg->bitFields.at(1).get());
    EXPECT_TRUE(reg->bitFields.at(1)->options.hasMask);
    const auto *copiedPointer = elementCast<VMPointer>(copy->memberList.at(1).get());
    EXPECT_EQ(copiedPointer->pointedElement->parent, copiedPointer);
    EXPECT_EQ(copiedPointer->innerData, QString());
    EXPECT_EQ(elementCast<VMArray>(copy->memberList.at(2).get())->memberList.at(1)->getName(), u"u[1]"_s);
    EXPECT_EQ(copy->offset, 0x1000u);
    EXPECT_EQ(copy->parent, &soc.root());
}

TEST(Pointers, MakeWhatTheyPointTo)
{
    const Loaded soc =
        placed(u"<ptr name='p' type='pair'/><ptr name='b' type='uint'/><ptr name='n' type='nothing'/>"_s);
    const auto pointer = [&](std::size_t at) {
        return elementCast<VMPointer>(instanceOf(soc).memberList.at(at).get());
    };
    pointer(0)->setValue(0x20);
    pointer(0)->allocatePointedElement();
    VMXMLElement *pointed = pointer(0)->pointedElement.get();
    ASSERT_TRUE(pointed);
    EXPECT_EQ(pointed->getName() + u' ' + pointed->getPath(), u"*(p) $I.p.>"_s);
    pointer(0)->allocatePointedElement();
    EXPECT_EQ(pointer(0)->pointedElement.get(), pointed);
    pointer(0)->setValue(0x40);
    EXPECT_EQ(elementCast<VMStruct>(pointed)->memberList.at(1)->getBaseAddress(), 0x42u);
    EXPECT_EQ(pointer(0)->getTypeString(), u"pair*"_s);

    EXPECT_EQ(pointer(1)->getTypeString(), u"uint*"_s);
    pointer(1)->allocatePointedElement();
    EXPECT_EQ(pointer(1)->getTypeString(), u"uint32*"_s);
    EXPECT_EQ(pointer(1)->pointedElement->getRubyClassName(), u"CHUnsignedInt"_s);
    pointer(2)->allocatePointedElement();
    EXPECT_FALSE(pointer(2)->pointedElement);

    auto target = std::make_unique<VMMemory>(u"t"_s, 4);
    target->remap(0x77);
    pointer(0)->pointTo(target.release());
    EXPECT_EQ(pointer(0)->getValue(), 0x77u);
    pointer(0)->pointTo(nullptr);
    EXPECT_EQ(pointer(0)->getValue(), 0u);
    EXPECT_FALSE(pointer(0)->pointedElement);

    const unsigned char data[] = {'a', 'b', 'c', 0, 'd'};
    pointer(0)->setInnerData(data, 5);
    EXPECT_EQ(pointer(0)->innerData, u"abc"_s);
    pointer(0)->setInnerData(data, 2);
    EXPECT_EQ(pointer(0)->innerData, u"ab..."_s);
    pointer(0)->setInnerData(data, 0);
    EXPECT_EQ(pointer(0)->innerData, u"..."_s);
}

TEST(Pointers, FollowTheTypeWordThatTheyHold)
{
    const Loaded soc = placed(u"<ptr name='p' type='uint8'/>"_s);
    auto *pointer = elementCast<VMPointer>(instanceOf(soc).memberList.at(0).get());
    pointer->allocatePointedElement();
    pointer->pointedType = u"pair"_s;
    pointer->allocatePointedElement(); // keeps what there is
    EXPECT_EQ(pointer->pointedElement->getTypeString(), u"uint8"_s);
    pointer->deletePointedElement();
    pointer->allocatePointedElement();
    EXPECT_EQ(pointer->pointedElement->getTypeString(), u"pair"_s);
}

TEST(Holes, AreNamedAfterTheirPlace)
{
    VMHole hole(12);
    EXPECT_EQ(hole.getName(), u"Reserved_00000000_12"_s);
    hole.setName(u"gap"_s);
    EXPECT_EQ(hole.getName(), u"Reserved_00000000_12"_s);
    VMStruct structure(u"s"_s, u"s"_s);
    structure.addElement(new VMRegister32(u"r"_s, true, true));
    structure.addElement(VMXMLElement::anonymousCopy(&hole));
    const VMStruct copy = structure;
    EXPECT_EQ(copy.getMemberList(), QStringList({u"r"_s, u"Reserved_00000004_12"_s}));
    structure.memberList.at(1)->remap(0x1F);
    EXPECT_EQ(structure.getMemberList().at(1), u"Reserved_0000001F_12"_s);
    EXPECT_EQ(copy.getMemberList().at(1), u"Reserved_00000004_12"_s);
}

TEST(Kinds, RowsMakeWhatTheySay)
{
    QStringList words;
    for (const veldmap::ScalarKind &kind : veldmap::scalarKinds()) {
        const std::unique_ptr<VMValuable> made = kind.make(u"x"_s, true, false);
        EXPECT_EQ(made->getType(), kind.type);
        EXPECT_EQ(made->getTypeString(), kind.typeWord.toString());
        EXPECT_EQ(made->getBitSize(), kind.bits);
        EXPECT_EQ(made->isSigned(), kind.isSigned);
        EXPECT_EQ(made->writable, !kind.rubyClass.isEmpty()); // registers are what the description says
        EXPECT_EQ(made->getName(), u"x"_s);
        const std::unique_ptr<VMXMLElement> copy(VMXMLElement::anonymousCopy(made.get()));
        EXPECT_EQ(copy->getType(), kind.type);
        EXPECT_EQ(veldmap::kindWordOf(kind.type), kind.kindWord);
        for (const veldmap::KindWord &word : kind.words) {
            if (!word.word.isEmpty())
                words += word.word + u':' + QString::number(word.uses);
        }
    }
    const auto named = [](const char *word, unsigned uses) {
        return veldmap::scalarKindNamed(QString::fromUtf8(word), uses) != nullptr;
    };
    EXPECT_EQ(words.size(), 15);
    EXPECT_TRUE(named("reg", veldmap::kMemberTag) && named("uint", veldmap::kPointedType));
    EXPECT_FALSE(named("void", veldmap::kMemberTag) || named("reg32", veldmap::kPointedType));
    EXPECT_FALSE(named("int", veldmap::kFoldedType) || named("ireg", veldmap::kCType) || named("", veldmap::kAnyUse));
    EXPECT_EQ(veldmap::kindWordOf(VMXMLElement::XML_ROOT_ARCHIVE), u"root_archive");
}

TEST(Types, AreFoundAsInAWalkOverTheLists)
{
    const Loaded soc(
        {{u"soc.xml"_s, u"<archive><include file='a.xml'/><alias name='pp'><ptr name='q' type='uint'/></alias>"_s
                        "<alias name='t'><uint8 name='u'/></alias><instance name='P' type='pp'/>"
                        "<instance name='Q' type='uint*'/></archive>"_s},
         {u"a.xml"_s, u"<archive><typedef name='t'><reg name='r'/></typedef></archive>"_s}});
    ASSERT_TRUE(soc.isLoaded()) << soc.errors.join(u'|').toStdString();
    // The earliest archive wins, though the other one declared the type first.
    EXPECT_EQ(soc.root().getTemplate(u"t"_s)->getType(), VMXMLElement::XML_UNSIGNED_INT8);
    auto *pointer = elementCast<VMPointer>(soc.root().getTemplate(u"pp"_s));
    EXPECT_EQ(soc.root().getTemplate(u"uint*"_s), pointer);
    pointer->allocatePointedElement(); // its type word is another one now
    EXPECT_EQ(soc.root().getTemplate(u"uint*"_s), nullptr);
    EXPECT_EQ(soc.root().getTemplate(u"uint32*"_s), pointer);
    EXPECT_EQ(soc.root().hasArchive(soc.directory->path(), u"a.xml"_s), &soc.archiveAt(1));
    EXPECT_EQ(soc.root().hasArchive(u"/elsewhere"_s, u"a.xml"_s), nullptr);

    const std::unique_ptr<VMXMLElement> memory(soc.root().allocateElementFromTypeName(u"memory"_s, u"x"_s));
    EXPECT_EQ(memory->sizeOf(), 0);
    EXPECT_EQ(soc.root().allocateElementFromTypeName(u"reg32"_s, u"x"_s), nullptr);
    EXPECT_EQ(soc.root().instanciateTemplate(u"none"_s, u"x"_s, 0), nullptr);
    EXPECT_EQ(soc.root().instances.size(), 2u);
}

TEST(MemoryImages, CoverMembersAndLeavePadding)
{
    const Loaded soc =
        placed(u"<uint8 name='a'/><hole size='24'/><reg name='w' protect='w'/><memory name='m' size='4'/>"_s
               "<int8 name='i' count='2'/><uint16 name='b'/>"_s);
    auto &instance = *soc.root().instances.at(0);
    unsigned char image[17];
    for (unsigned char &byte : image)
        byte = static_cast<unsigned char>(&byte - image + 0x80);
    instance.memSet(image + 1); // at an odd address
    const auto *array = elementCast<VMArray>(instanceOf(soc).memberList.at(4).get());
    const auto *signedMember = elementCast<VMValuable>(array->memberList.at(1).get());
    EXPECT_EQ(signedMember->getValueString(DISPLAY_DEC), u"-114"_s);
    EXPECT_EQ(elementCast<VMValuable>(array->prototype.get())->getValue(), 0u);

    unsigned char copy[17] = {};
    instance.memGet(copy + 1);
    unsigned char mask[17] = {};
    instance.getReadMask(mask + 1);
    const QByteArray expected = QByteArray("\0\x81\xFF\xFF\xFF\x85\x86\x87\x88\0\0\0\0\x8d\x8e\x8f\x90", 17);
    EXPECT_EQ(QByteArray(reinterpret_cast<const char *>(copy), 17), expected);
    EXPECT_EQ(QByteArray(reinterpret_cast<const char *>(mask), 17),
              QByteArray("\0\xFF\0\0\0\0\0\0\0\0\0\0\0\xFF\xFF\xFF\xFF", 17));
    instance.setReadError(true);
    EXPECT_TRUE(signedMember->readError);
}

TEST(MemoryImages, MembersOutsideTheirHolderTakeNoPart)
{
    const Loaded soc = placed(u"<reg8 name='a'/><hole size='0-64'/><reg name='b'/><memory name='c' size='1'/>"_s);
    VMXMLElement &instance = *soc.root().instances.at(0);
    ASSERT_EQ(instance.sizeOf(), 4);
    unsigned char image[4] = {0x5A, 0x5A, 0x5A, 0x5A};
    instance.memSet(image);
    instance.getReadMask(image);
    EXPECT_EQ(QByteArray(reinterpret_cast<const char *>(image), 4), QByteArray("\0\x5A\x5A\x5A", 4));

    const Loaded empty = placed(u"<reg name='a'/><hole size='0-64'/><reg8 name='b'/>"_s);
    ASSERT_EQ(instanceOf(empty).sizeOf(), 0);
    empty.root().instances.at(0)->memSet(image);
    EXPECT_EQ(elementCast<VMValuable>(instanceOf(empty).memberList.front().get())->getValue(), 0u);
}

TEST(MemoryImages, ServeWhatLiesInThemWhereverItsHolderEnds)
{
    // The gap moves b in front of s, where it still lies in the image of the instance.
    const Loaded soc = placed(u"<reg name='a'/><struct name='s'><reg8 name='x'/><hole size='0-24'/>"
                              "<reg8 name='b' protect='r'/></struct><reg8 name='c'/><reg name='d'/>"_s);
    VMXMLElement &instance = *soc.root().instances.at(0);
    auto &inner = *elementCast<VMStruct>(instanceOf(soc).memberList.at(1).get());
    auto &moved = *elementCast<VMValuable>(instanceOf(soc).memberList.at(2).get());
    ASSERT_EQ(instance.sizeOf(), 8);
    ASSERT_EQ(inner.memberList.at(2)->getBaseAddress(), 0x1002u);
    unsigned char image[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    instance.memSet(image);
    EXPECT_EQ(elementCast<VMValuable>(inner.memberList.at(2).get())->getValue(), 3u);
    inner.memSet(image); // whose own image has no bytes at all
    EXPECT_EQ(elementCast<VMValuable>(inner.memberList.at(2).get())->getValue(), 3u);
    unsigned char mask[8] = {};
    instance.getReadMask(mask);
    EXPECT_EQ(QByteArray(reinterpret_cast<const char *>(mask), 8), QByteArray("\0\0\xFF\0\0\0\0\0", 8));

    moved.remap(5); // as a host may
    instance.memSet(image);
    EXPECT_EQ(moved.getValue(), 6u);
    moved.remap(8); // behind the end
    instance.memSet(image);
    EXPECT_EQ(moved.getValue(), 6u);
    instance.memGet(image);
    EXPECT_EQ(image[8], 9);
}

#ifdef QT_DEBUG
TEST(NullArguments, EndInAnAssertionWithWords)
{
    VMStruct structure(u"s"_s, u"s"_s);
    VMRegister32 reg(u"r"_s, true, true);
    EXPECT_DEATH(VMXMLElement::anonymousCopy(nullptr), "there is no copy of null");
    EXPECT_DEATH(structure.addElement(nullptr), "a structure takes elements");
    EXPECT_DEATH(reg.addBitField(nullptr), "a valuable takes bitfields");
    EXPECT_DEATH(std::ignore = reg.offsetOf(nullptr), "leads to an element");
}
#endif

TEST(Dump, PrintsTheTreeWithItsSizes)
{
    const Loaded soc = placed(u"<reg name='r'><bits name='f' pos='0'/></reg><hole size='8'/>"_s);
    testing::internal::CaptureStdout();
    const int size = soc.root().dumpInfo(1);
    const QString text = QString::fromStdString(testing::internal::GetCapturedStdout());
    const auto sizeOf = [](std::size_t bytes) { return QString::number(bytes); };
    EXPECT_EQ(text, u" |_"_s + sizeOf(sizeof(VMRootArchive)) + u" soc\n  |_"_s + sizeOf(sizeof(VMStruct)) +
                        u" I\n   |_"_s + sizeOf(sizeof(VMRegister32)) + u" r\n    |_"_s + sizeOf(sizeof(VMBitField)) +
                        u" f\nNO INFO\n"_s);
    EXPECT_EQ(size,
              static_cast<int>(sizeof(VMRootArchive) + sizeof(VMStruct) + sizeof(VMRegister32) + sizeof(VMBitField)));
}

TEST(MemoryMaps, ClearTheActiveOne)
{
    VMMemoryMap other;
    {
        VMMemoryMap map;
        VMMemoryMap::m_activeMemoryMap = &map;
    }
    EXPECT_EQ(VMMemoryMap::m_activeMemoryMap, nullptr);
    VMMemoryMap::m_activeMemoryMap = &other;
    {
        VMMemoryMap map;
    }
    EXPECT_EQ(VMMemoryMap::m_activeMemoryMap, &other);
}
