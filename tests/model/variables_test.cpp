// Which variable an expression sees.

#include "support/loaded.h"

using namespace Qt::StringLiterals;

namespace {

int valueOf(const Loaded &soc, const QString &expression)
{
    if (!soc.isLoaded())
        throw std::runtime_error(soc.errors.join(u'|').toStdString());
    QString message;
    bool error = false;
    const int value = soc.archiveAt(0).variables->evalExpression(expression, message, error);
    EXPECT_FALSE(error) << message.toStdString();
    return value;
}

QString variable(const QString &name, int value, const QString &attributes = QString())
{
    return u"<var name='%1' value='%2' %3/>"_s.arg(name, QString::number(value), attributes);
}

} // namespace

TEST(Scope, GlobalBeatsIncludedBeatsOwn)
{
    const QString own = variable(u"A"_s, 1) + variable(u"B"_s, 1) + variable(u"C"_s, 1) + variable(u"C"_s, 2);
    const Loaded soc(
        {{u"soc.xml"_s, u"<archive>"_s + own + u"<include file='x.xml'/><include file='y.xml'/></archive>"_s},
         {u"x.xml"_s, u"<archive>"_s + variable(u"A"_s, 10) + variable(u"B"_s, 10) + u"</archive>"_s},
         {u"y.xml"_s, u"<archive>"_s + variable(u"A"_s, 20) + variable(u"D"_s, 20) +
                          variable(u"B"_s, 30, u"global='yes'"_s) + u"</archive>"_s}});
    EXPECT_EQ(valueOf(soc, u"A"_s), 20); // the last include
    EXPECT_EQ(valueOf(soc, u"B"_s), 30); // global
    EXPECT_EQ(valueOf(soc, u"C"_s), 2);  // the later row
    EXPECT_EQ(valueOf(soc, u"D"_s), 20);

    // The list of all variables and the walk agree, and an evaluation with the list too.
    const QList<VMIntVar> all = soc.archiveAt(0).getAllIncludedVariables();
    QString names;
    for (const VMIntVar &row : all)
        names += row.name + QString::number(row.leftValue) + u' ';
    EXPECT_EQ(names, u"A1 B1 C1 C2 A10 B10 B30 A20 D20 B30 B30 "_s);
    QString message;
    bool error = true;
    EXPECT_EQ(evaluateExpressionWithVariables(all, u"n"_s, u"A+B+C"_s, message, error), 52);
    EXPECT_FALSE(error);
}

TEST(Scope, AnArchiveOnTheWayInAddsNothing)
{
    // Through a, which includes soc again, soc's own X would otherwise win over a's.
    const Loaded soc({{u"soc.xml"_s, u"<archive><include file='a.xml'/>"_s + variable(u"X"_s, 1) + u"</archive>"_s},
                      {u"a.xml"_s, u"<archive>"_s + variable(u"X"_s, 2) + u"<include file='soc.xml'/></archive>"_s}});
    EXPECT_EQ(valueOf(soc, u"X"_s), 2);
    EXPECT_EQ(soc.archiveAt(0).getAllIncludedVariables().size(), 2);
    QString message;
    bool error = false;
    EXPECT_EQ(soc.archiveAt(1).variables->evalExpression(u"X"_s, message, error), 1);
}

TEST(Scope, DiamondsAreWalkedOnce)
{
    Files files = {{u"soc.xml"_s, u"<archive><include file='a0.xml'/><include file='b0.xml'/></archive>"_s}};
    for (int level = 0; level < 40; ++level) {
        const QString next = QString::number(level + 1);
        const QString includes =
            level == 39 ? variable(u"DEEP"_s, 7) : u"<include file='a%1.xml'/><include file='b%1.xml'/>"_s.arg(next);
        for (const QString &name : {u"a"_s, u"b"_s})
            files.push_back({name + QString::number(level) + u".xml"_s, u"<archive>"_s + includes + u"</archive>"_s});
    }
    const Loaded soc(files);
    EXPECT_EQ(valueOf(soc, u"DEEP"_s), 7);
    QString message;
    bool error = false;
    soc.archiveAt(0).variables->evalExpression(u"NONE"_s, message, error);
    EXPECT_TRUE(error);
    EXPECT_EQ(message, u"Error in expression of : NONE"_s);
    EXPECT_EQ(soc.archiveAt(0).variables->getEnumByName(u"none"_s), nullptr);
    EXPECT_EQ(soc.archiveAt(0).getAllIncludedVariables().size(), 2); // each table once where there are too many ways
}

TEST(Scope, IncludedEnumsComeFirst)
{
    const auto withEnum = [](const QString &entry, const QString &more) {
        return u"<archive><enum name='e'><entry name='%1'/></enum>%2</archive>"_s.arg(entry, more);
    };
    const Loaded soc({{u"soc.xml"_s, withEnum(u"OWN"_s, u"<include file='x.xml'/><include file='y.xml'/>"_s)},
                      {u"x.xml"_s, withEnum(u"X"_s, QString())},
                      {u"y.xml"_s, withEnum(u"Y"_s, QString())}});
    const VMEnum *found = soc.archiveAt(0).variables->getEnumByName(u"e"_s);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->getEntryName(0) + found->getEntryName(-1) + found->getEntryName(7), u"X07"_s);
    EXPECT_EQ(soc.map->globalVariables->getEnumByName(u"e"_s), nullptr);
}

TEST(Expressions, OfADescription)
{
    const Loaded soc = Loaded::archive(variable(u"W"_s, 8) + u"<range name='bits' left='W-1' right='0' dir='up'/>"_s +
                                       variable(u"pi"_s, 3) + u"<var name='q.r' value='1'/>"_s);
    const std::pair<QString, int> rows[] = {
        {u"0x10 + 1"_s, 17},
        {u"bits"_s, 7},
        {u"exp2(4)"_s, 16},
        {u"exp2(40)"_s, 256},
        {u"exp2(-1)"_s, -2147483647 - 1},
        {u"pi"_s, 3},
        {u"W>7"_s, 1},
        {u"-1.5"_s, -2},
        {u"\"text\""_s, 0},
        {u"0xFFFFFFFF"_s, -1},
        {u"000000012"_s, 12},
        {u"4294967296"_s, -1},
        {u"(0-2147483647-1)/(0-1)"_s, -2147483647 - 1},
        {u"(0-2147483647-1)%(0-1)"_s, 0},
        {u"(0-2147483648)/(0-1)"_s, 0}, // 2147483648 is unsigned, and so is what is made of it
        {u"(0-2147483648)%(0-1)"_s, -2147483647 - 1},
        {u"exp2(31)/(0-1)"_s, -2147483647 - 1},
        {u"exp2(31)%(0-1)"_s, 0},
        {u"1<<(0-1)"_s, -2147483647 - 1},
        {u"1e300"_s, -2147483647 - 1},
        {u"\"12\""_s, 0},
    };
    for (const auto &[expression, value] : rows)
        EXPECT_EQ(valueOf(soc, expression), value) << expression.toStdString();
    QString message;
    bool error = false;
    for (const QString &wrong : {u"exp2(1,2)"_s, u"q.r"_s, u""_s, u"W W"_s, u"exp2(\"a\")"_s}) {
        EXPECT_EQ(soc.archiveAt(0).variables->evalExpression(wrong, message, error), -1) << wrong.toStdString();
        EXPECT_EQ(message, u"Error in expression of : "_s + wrong);
    }
    const VMIntVar *range = soc.archiveAt(0).variables->findVariable(u"bits"_s);
    EXPECT_EQ(range->leftExpression + range->rightExpression, u"W-10"_s);
    EXPECT_EQ(range->dir, VMIntVar::up);
}

TEST(Variables, SpacersCountOn)
{
    const QString first = generateSpacer().name;
    const QString second = generateSpacer().name;
    EXPECT_TRUE(first.startsWith("VELDMAPSPACER_"_L1));
    EXPECT_EQ(second.sliced(14).toInt(), first.sliced(14).toInt() + 1);
}
