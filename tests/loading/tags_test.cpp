// What each tag of a description refuses, with its words and its place.

#include "support/loaded.h"

#include "model/aggregates.h"
#include "model/pointer.h"
#include "model/scalars.h"

#include <span>

using namespace Qt::StringLiterals;

namespace {

struct Refused {
    QString text; // "^" stands behind the tag that the message must point to
    QString message;
};

/// Loads \a text as the content of an archive and expects the one error at the mark, and nothing loaded.
void expectRefused(const Refused &row)
{
    QString text = u"<archive>\n"_s + row.text + u"\n</archive>"_s;
    const qsizetype mark = text.indexOf(u'^');
    ASSERT_GE(mark, 0) << row.text.toStdString();
    text.remove(mark, 1);
    const QString before = text.first(mark);
    const QString place = u"soc.xml:%1:%2:"_s.arg(QString::number(1 + before.count(u'\n')),
                                                  QString::number(mark - before.lastIndexOf(u'\n') - 1));
    const Loaded soc(text);
    EXPECT_FALSE(soc.isLoaded()) << row.text.toStdString();
    EXPECT_EQ(soc.errors, QStringList(place + row.message));
    EXPECT_EQ(soc.warnings, QStringList());
}

void expectAllRefused(std::span<const Refused> rows)
{
    for (const Refused &row : rows)
        expectRefused(row);
}

} // namespace

TEST(Tags, ArchiveAndVariablesRefuse)
{
    const Refused rows[] = {
        {u"<REG32 name='r'/>^"_s, u"Unvalid tag : 'reg32'"_s},
        {u"<var value='1'/>^"_s, u"A variable of the archive 'soc' has no name!"_s},
        {u"<var name=''>^<comment/></var>"_s, u"A variable of the archive 'soc' has no name!"_s},
        {u"<var name='a-b'/>^"_s, u"The variable 'a_b' of the archive 'soc' has no value!"_s},
        {u"<var name='A' value='B'/>^"_s, u"In archive 'soc', variable 'A' declaration : Error in expression of : A"_s},
        {u"<var name='L' value='1'/><var name='G' value='L' global='yes'/>^"_s,
         u"In archive 'soc', variable 'G' declaration : Error in expression of : G"_s},
        {u"<range left='1' right='0'/>^"_s, u"Range has no name!"_s},
        {u"<range name='R' left='1'/>^"_s, u"The range 'R' misses left or right value!"_s},
        {u"<range name='R' left='1' right='0' dir='UP'/>^"_s, u"Invalid direction 'UP' for range 'R' ."_s},
        {u"<range name='R' left='1' right='X'/>^"_s, u"In range 'R' declaration : Error in expression of : R"_s},
        {u"<enum name='e'><entry/>^</enum>"_s, u"This entry has no name!"_s},
        {u"<enum name='e'><entry name='A' value='1+'/>^</enum>"_s,
         u"Enum 'e', expression '1+' : Error in expression of : A\n"_s},
        {u"<enum name='e'><bound/>^</enum>"_s, u"A bound of the enum 'e' has no name!"_s},
        {u"<enum name='e'><Option/>^</enum>"_s, u"Enum 'e' contains an unvalid 'option' tag."_s},
        {u"<include><file/>^</include>"_s, u"Include contains an unvalid 'file' tag.\n"_s},
        {u"<include><case cond='1/0' file='a.xml'/>^</include>"_s,
         u"Condition '1/0' of include 'a.xml' contains an error in its expression !"_s},
    };
    expectAllRefused(rows);
}

TEST(Tags, StructuresRefuse)
{
    const Refused rows[] = {
        {u"<module>^</module>"_s, u"module has no name !"_s},
        {u"<typedef name=''>^</typedef>"_s, u"module has no name !"_s},
        {u"<module name='m'><cjoker/>^</module>"_s, u"Module contains an unvalid cjoker tag.\n"_s},
        {u"<module name='m'><struct>^</struct></module>"_s, u"Tag defining '' contains struct with no name !"_s},
        {u"<module name='m'><struct name='s'><struct>^</struct></struct></module>"_s,
         u"Tag defining 's' contains struct with no name !"_s},
        {u"<module name='m'><struct name='s' count=''>^</struct></module>"_s,
         u"Tag defining '' contains struct 's' with an error in its count expression !"_s},
        {u"<module name='m'><struct name='s'><Var name='A' value='1'/>^</struct></module>"_s,
         u"Struct 's' contains an unvalid 'var' tag.\n"_s},
        {u"<module name='m'><hole size='X'/>^</module>"_s, u"Hole expression X : Error in expression of : X\n"_s},
        {u"<module name='m'><memory name='b' size='X'/>^</module>"_s, u"Memory 'b' : error in the size expression !"_s},
        {u"<module name='m'><memory name='b'><bits/>^</memory></module>"_s,
         u"Memory 'b' contains an unvalid 'bits' tag.\n"_s},
        {u"<module name='m'><ptr name='p' type='Void' count='X'/>^</module>"_s,
         u"Tag defining '' contains void array 'p' with an error in its count expression !"_s},
        {u"<module name='m'><ptr name='p' type='T' count='1-2'/>^</module>"_s,
         u"Invalid '-1' array count of type 'T' for array 'p'\n"_s},
        {u"<module name='m'><ptr name='p'><bits/>^</ptr></module>"_s,
         u"Pointer 'p' contains an unvalid 'bits' tag.\n"_s},
    };
    expectAllRefused(rows);
    // A foreign tag in an alias is told and passed over.
    const Loaded soc = Loaded::archive(u"<alias name='a'><module/><uint8 name='u'/></alias>"_s);
    EXPECT_TRUE(soc.isLoaded());
    EXPECT_EQ(soc.errors, QStringList(u"soc.xml:1:25:Alias 'a' contains an unvalid 'module' tag.\n"_s));
    const Loaded empty = Loaded::archive(u"<alias name='a'><comment>nothing</comment></alias>"_s);
    EXPECT_FALSE(empty.isLoaded());
    EXPECT_EQ(empty.errors, QStringList());
}

TEST(Tags, InstancesRefuse)
{
    const Refused rows[] = {
        {u"<instance address='X'/>^"_s, u"Address of instance '' of type '' contains an error in its expression !"_s},
        {u"<instance type='t'/>^"_s, u"Instance of 't' has no name!"_s},
        {u"<instance name='I'/>^"_s, u"Could not instanciate instance 'I'! (missing module or typedef name)"_s},
        {u"<instance name='I' type='t'/>^"_s,
         u"Could not instanciate instance 'I' of type 't'! (missing include or include not valid?)"_s},
        {u"<module name='m'><instance type='t'/>^</module>"_s, u"Found instance with no name!.\n"_s},
        {u"<module name='m'><instance name='i'/>^</module>"_s, u"Instance 'i' has no type!.\n"_s},
        {u"<module name='m'><instance name='i' type='t' count='X'/>^</module>"_s,
         u"Tag defining '' contains instance 'i' with an error in its count expression !"_s},
        {u"<module name='m'><instance name='i' type='t'/>^</module><typedef name='t'/>"_s,
         u"Instance 'i' uses type 't' which does not exist (or which must be declared before) !.\n"_s},
        {u"<module name='a b'/><module name='m'><instance name='i' type='a b'/>^</module>"_s,
         u"Instance 'i' uses type 'a_b' which does not exist (or which must be declared before) !.\n"_s},
    };
    expectAllRefused(rows);
}

TEST(Tags, ValuablesRefuse)
{
    const Refused rows[] = {
        {u"<module name='m'><Reg count='2'/>^</module>"_s, u"Module contains an unamed reg\n"_s},
        {u"<module name='m'><reg count='X'/>^</module>"_s,
         u"Tag defining '' contains reg array '' with an error in its count expression !"_s},
        {u"<module name='m'><reg8 name='r' count='0-3'/>^</module>"_s,
         u"Invalid '-3' array count of type 'reg8' for array 'r'\n"_s},
        {u"<module name='m'><reg8 name='r'><options/>^</reg8></module>"_s,
         u"reg8 r contains an unvalid options tag.\n"_s},
        {u"<module name='m'><reg name='r'><bits pos='1'/>^</reg></module>"_s,
         u"Valuable r contains an unamed bitfield.\n"_s},
        {u"<module name='m'><reg name='r'><bits name='f'/>^</reg></module>"_s,
         u"Valuable r, bitfield f : position undefined\n"_s},
        {u"<module name='m'><reg name='r'><bits name='f' pos='X:0'/>^</reg></module>"_s,
         u"Valuable r, bitfield f, expression X : Error in expression of : X\n"_s},
        {u"<module name='m'><reg name='r'><bits name='f' pos='1' cutstart='X'/>^</reg></module>"_s,
         u"Valuable 'r', bitfield 'f', expression 'X' : Error in expression of : X\n"_s},
        {u"<module name='m'><reg name='r'><bits name='f' pos='7:0' cut='two'/>^</reg></module>"_s,
         u"Valuable r, bitfield f : bad cut size\n"_s},
        {u"<module name='m'><reg name='r'><bits name='f' pos='7:0' cut='16'/>^</reg></module>"_s,
         u"Valuable r, bitfield f : cutting bitfield with divisor non-multiple of total bitfield size\n"_s},
        {u"<module name='m'><reg name='r'><bits name='f' pos='1' cutenum='e'/>^</reg></module><enum name='e'/>"_s,
         u"Bitfield 'f' is cut thanks to an undefined enum 'e'.\n"_s},
        {u"<module name='m'><reg name='r'><bits name='f' pos='1'><option/>^</bits></reg></module>"_s,
         u"Bitfield 'f' contains an unvalid 'option' tag.\n"_s},
        {u"<module name='m'><reg name='r'><bitgroup name='g'>^<comment/></bitgroup></reg></module>"_s,
         u"Bitgroup g contains an unvalid comment tag.\n"_s},
        {u"<module name='m'><reg name='r'><bitgroup name='g'><entry ref='f'/>^</bitgroup><bits name='f' pos='0'/></reg>"_s
         u"</module>"_s,
         u"Bitgroup 'g' contains an undefined bitfield or bitgroup 'f'.\n"_s},
        {u"<module name='m'><reg name='r'><bits name='f' pos='3:0' cut='2' cutprefix='p'><options "_s
         u"linkenum='e'/>^</bits>"_s
         u"</reg></module>"_s,
         u"Options of bitfield 'p_0' is linked to an undefined enum 'e'.\n"_s},
        {u"<enum name='e'/><module name='m'><reg name='r'><bits name='f' pos='0'><options linkenum='e'><option/>^"_s
         u"</options></bits></reg></module>"_s,
         u"Options of bitfield 'f' is linked to enum 'e' but tries to define an other option.\n"_s},
        {u"<module name='m'><reg name='r'><bits name='f' pos='0'><options><comment/>^</options></bits></reg></module>"_s,
         u"Options of bitfield 'f' contains an unvalid 'comment' tag.\n"_s},
        {u"<module name='m'><reg name='r'><bits name='f' pos='0'><options><option name='o' value='X'/>^</options>"_s
         u"</bits></reg></module>"_s,
         u"Option expression X : Error in expression of : X\n"_s},
        {u"<module name='m'><reg name='r'><bits name='f' pos='0'><options><option name='o'><mask/>^</option></options>"_s
         u"</bits></reg></module>"_s,
         u"Bitfield options 'o' contains an unvalid 'mask' tag.\n"_s},
    };
    expectAllRefused(rows);
}

TEST(Tags, ExceededLimitsPointToTheirTag)
{
    const Refused rows[] = {
        {u"<module name='m'><reg name='r' count='2000000000'/>^</module>"_s,
         u"Array 'r' is too large: it would hold 2000000000 elements, and 262144 is the limit."_s},
        {u"<module name='m'><struct name='a' count='1000'>^<struct name='b' count='1000'/></struct></module>"_s,
         u"Array 'a' is too large: it would hold 1003000 elements, and 262144 is the limit."_s},
        {u"<module name='m'><reg name='r'><bits name='f' pos='1000000000:0' cut='1'/>^</reg></module>"_s,
         u"Valuable r, bitfield f : cutting bitfield into more than 128 pieces"_s},
    };
    expectAllRefused(rows);
}

TEST(Tags, FailureLeavesGlobalVariablesOnly)
{
    const Loaded soc = Loaded::archive(u"<var name='G' value='7' global='yes'/><module name='m'/>"_s
                                       "<instance name='I' type='m'/><reg/>"_s);
    EXPECT_FALSE(soc.isLoaded());
    ASSERT_EQ(soc.map->globalVariables->size(), 1);
    EXPECT_EQ(soc.map->globalVariables->first().leftValue, 7);
}

TEST(Tags, EnumCountsOnAndServesAsType)
{
    const Loaded soc =
        Loaded::archive(u"<enum name='e'><entry name='a'/><entry name='b' value='a+5'/><entry name='c'/>"_s
                        "<bound name='d'/><entry name='f'><comment>last</comment></entry></enum>"_s);
    const VMVariableManager &variables = *soc.archiveAt(0).variables;
    QStringList rows;
    for (const VMIntVar &row : variables)
        rows += u"%1=%2(%3)%4"_s.arg(row.name, QString::number(row.leftValue), row.leftExpression,
                                     row.ownerEnum ? u"e"_s : u""_s);
    EXPECT_EQ(rows, QStringList({u"a=0(0)e"_s, u"b=5(a+5)e"_s, u"c=6(6)e"_s, u"d=7(7)"_s, u"f=7(7)e"_s}));

    const auto &type = soc.type<VMInt32>(u"e"_s);
    EXPECT_TRUE(type.enumTemplate);
    EXPECT_EQ(type.typedefName, u"e"_s);
    const VMBitField &field = *type.bitFields.at(0);
    EXPECT_EQ(field.options.optionList.size(), 4);
    EXPECT_EQ(field.options.optionList.last().comment, u"last"_s);
    EXPECT_EQ(field.convertValueToValueString(5, DISPLAY_DEFAULT, true, false), u"0x5 (b)"_s);
    EXPECT_EQ(field.physicalUpPosExpression, QString());
}

TEST(Tags, FirstTypeOfANameWins)
{
    const Loaded soc = Loaded::archive(u"<module name='t'><reg8 name='a'/></module>\n"_s
                                       "<typedef name='t'><var name='V' value='1'/><reg name='b'/></typedef>\n"
                                       "<instance name='I' type='t'/>"_s);
    EXPECT_EQ(soc.warnings,
              QStringList(u"soc.xml:2:18:Type 't' already exists or already loaded ! (discarding this one)"_s));
    EXPECT_EQ(soc.root().instances.at(0)->sizeOf(), 1);
    EXPECT_EQ(soc.archiveAt(0).variables->size(), 1);
    EXPECT_EQ(soc.archiveAt(0).templates.size(), 1u);
}

TEST(Tags, ModulesKeywordsCategoryAndAliases)
{
    const Loaded soc = Loaded::archive(
        u"<module name='m' ckeywords=' const  far ' category='C' rubyconstants='yes'/><typedef name='t' ckeywords='x'/>"_s
        "<alias name='al'><comment>kept</comment><uint8 name='u' count='3'><comment>lost</comment></uint8></alias>"
        "<alias name='last'><reg8 name='first'/><struct name='second'/></alias>"
        "<instance name='I' type='m' category='D'/><instance name='J' type='t' category='D'/>"
        "<instance name='K' type='al' address='0x10'/>"_s);
    ASSERT_TRUE(soc.isLoaded());
    const auto &module = soc.type<VMStruct>(u"m"_s);
    EXPECT_EQ(module.cKeywords, QStringList({u"volatile"_s, u"const"_s, u"far"_s}));
    EXPECT_TRUE(module.rubyConstants);
    EXPECT_EQ(soc.type<VMStruct>(u"t"_s).cKeywords, QStringList(u"x"_s));
    EXPECT_EQ(soc.type<VMArray>(u"al"_s).comment, u"kept"_s);
    EXPECT_EQ(soc.type<VMStruct>(u"last"_s).name, u"second"_s);
    EXPECT_EQ(soc.root().instances.at(0)->category, u"C"_s);
    EXPECT_EQ(soc.root().instances.at(1)->category, u"D"_s);
    EXPECT_EQ(elementCast<VMArray>(soc.root().instances.at(2).get())->memberList.at(2)->getAddressString(),
              u"0x00000012"_s);
}

TEST(Tags, ValuableAttributesAndPointers)
{
    const Loaded soc = Loaded::archive(
        u"<module name='m'><reg name='r w' protect='xwr' display='bin'/><reg8 name='q' protect='R'/>"_s
        "<int16 name='i' protect=''/><uint8 name='u' display='hex' count='2'/><ireg name='n' display='other'/>"
        "<reg16 name='h'><l name='lo-w'/><h name='hi'/></reg16><ptr name='p' type='VOID'/><ptr type='My Type'/></module>"_s);
    const auto &module = soc.type<VMStruct>(u"m"_s);
    const auto member = [&](std::size_t at) { return elementCast<VMValuable>(module.memberList.at(at).get()); };
    EXPECT_EQ(member(0)->getName() + member(0)->getProtectString(), u"r_wrw"_s);
    EXPECT_EQ(member(0)->displayType, DISPLAY_BIN);
    EXPECT_EQ(member(1)->getProtectString(), u"--"_s);
    EXPECT_EQ(member(2)->getProtectString(), u"rw"_s);
    EXPECT_EQ(member(2)->declaredType, QString());
    const auto *array = elementCast<VMArray>(module.memberList.at(3).get());
    EXPECT_EQ(array->prototype->declaredType, u"uint8"_s);
    EXPECT_EQ(array->declaredType, QString());
    EXPECT_EQ(member(4)->displayType, DISPLAY_DEC);
    EXPECT_EQ(member(5)->lowName + u'|' + member(5)->highName, u"lo-w|hi"_s);
    EXPECT_EQ(elementCast<VMPointer>(module.memberList.at(6).get())->pointedType, u"void"_s);
    EXPECT_EQ(elementCast<VMPointer>(module.memberList.at(7).get())->pointedType, u"My_Type"_s);
}
