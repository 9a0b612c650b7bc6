// What each tag of a description refuses, with its words and its place.

#include "support/loaded.h"

#include "model/aggregates.h"
#include "model/pointer.h"
#include "model/scalars.h"

using namespace Qt::StringLiterals;

TEST(Tags, AreRefusedWithWordsAndAPlace)
{
    // Each case is the content of an archive with a "^" behind the tag that its one error must point to.
    const QString file = u"loading/refused.txt"_s;
    QStringList cases = readFile(QStringLiteral(GOLDEN_DIRECTORY "/") + file).chopped(1).split(u"\n\n"_s);
    for (QString &text : cases) {
        const QString content = text.section(u"\n=> "_s, 0, 0);
        QString archive = u"<archive>\n"_s + content + u"\n</archive>"_s;
        const qsizetype mark = archive.indexOf(u'^');
        ASSERT_GE(mark, 0) << content.toStdString();
        const QString before = archive.first(mark);
        Loaded soc(archive.remove(mark, 1));
        EXPECT_FALSE(soc.isLoaded()) << content.toStdString();
        EXPECT_EQ(soc.warnings, QStringList());
        const QString place =
            u"soc.xml:%1:%2:"_s.arg(1 + before.count(u'\n')).arg(mark - before.lastIndexOf(u'\n') - 1);
        text = content + u"\n=> "_s +
               soc.errors.replaceInStrings(u"\n"_s, u"\\n"_s).join(u"\n=> "_s).replace(place, u"^ "_s);
    }
    expectGolden(file, cases.join(u"\n\n"_s) + u'\n');
}

TEST(Tags, OfAnAliasAreToldAndPassedOver)
{
    const Loaded soc = Loaded::archive(u"<alias name='a'><module/><uint8 name='u'/></alias>"_s);
    EXPECT_TRUE(soc.isLoaded());
    EXPECT_EQ(soc.errors, QStringList(u"soc.xml:1:25:Alias 'a' contains an unvalid 'module' tag.\n"_s));
    const Loaded empty = Loaded::archive(u"<alias name='a'><comment>nothing</comment></alias>"_s);
    EXPECT_FALSE(empty.isLoaded());
    EXPECT_EQ(empty.errors, QStringList());
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
