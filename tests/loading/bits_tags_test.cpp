// The positions, values and pieces of bitfields.

#include "support/loaded.h"

#include "model/aggregates.h"
#include "model/valuable.h"

using namespace Qt::StringLiterals;

namespace {

/// A description with one register `r` in the module `m` that has \a content; the variable BASE is 4.
Loaded withRegister(const QString &content)
{
    return Loaded::archive(
        u"<var name='BASE' value='4'/><enum name='abc'><entry name='A' value='9'/><entry name='B'/>"_s
        "<entry name='C'/></enum><module name='m'><reg name='r'>" +
        content + u"</reg></module>"_s);
}

VMValuable &registerOf(const Loaded &soc)
{
    return *elementCast<VMValuable>(soc.type<VMStruct>(u"m"_s).memberList.at(0).get());
}

/// The fields as "name up:down (up text:down text)".
QStringList positionsOf(const Loaded &soc)
{
    QStringList positions;
    for (const auto &field : registerOf(soc).bitFields)
        positions +=
            u"%1 %2:%3 (%4:%5)"_s.arg(field->getName(), QString::number(field->upPos), QString::number(field->downPos),
                                      field->upPosExpression, field->downPosExpression);
    return positions;
}

} // namespace

TEST(Bits, PositionsAreOrderedAndSplitAtTheLastColon)
{
    const std::pair<QString, QString> rows[] = {
        {u"5:9"_s, u"f 9:5 (9:5)"_s},
        {u"3"_s, u"f 3:3 (3:3)"_s},
        {u"0x1F:0b100"_s, u"f 31:4 (0x1F:0b100)"_s},
        {u"BASE:BASE+3"_s, u"f 7:4 (BASE+3:BASE)"_s},
        {u"1:\n0"_s, u"f 1:0 (1: 0)"_s}, // a line end in an attribute is a blank
        {u"32"_s, u"f 32:32 (32:32)"_s},
        {u"40:33"_s, u"f 40:33 (40:33)"_s},
        {u"0-1:0-5"_s, u"f -1:-5 (0-1:0-5)"_s},
        {u"0x80000000:0"_s, u"f 0:-2147483648 (0:0x80000000)"_s},
        {u"1000000000:0"_s, u"f 1000000000:0 (1000000000:0)"_s},
        {u"2147483647:-2147483647"_s, u"f 2147483647:-2147483647 (2147483647:-2147483647)"_s},
    };
    for (const auto &[pos, expected] : rows)
        EXPECT_EQ(positionsOf(withRegister(u"<bits name='f' pos='%1'/>"_s.arg(pos))), QStringList(expected));
}

TEST(Bits, AccessAndReset)
{
    struct Row {
        QString attributes;
        QString access;
        QString reset;
    };
    const Row rows[] = {
        {u"pos='0'"_s, u"--"_s, u"-"_s},
        {u"pos='0' access='rw' rst='NO'"_s, u"rw"_s, u"-"_s},
        {u"pos='0' access='rcw' rst='-'"_s, u"rc"_s, u"-"_s},
        {u"pos='0' access='wc' rst=''"_s, u"-c"_s, u"-"_s},
        {u"pos='0' access='ws' rst='0'"_s, u"-s"_s, u"0"_s},
        {u"pos='0' access='RW' rst='none'"_s, u"--"_s, u"0"_s},
        {u"pos='4:1' rst='ALL1'"_s, u"--"_s, u"15"_s},
        {u"pos='4:1' rst='0x1F'"_s, u"--"_s, u"15"_s},
        {u"pos='31:0' rst='0xFFFFFFFF'"_s, u"--"_s, u"4294967295"_s},
        {u"pos='31:0' rst='010'"_s, u"--"_s, u"8"_s},
        {u"pos='31:0' rst='0b101'"_s, u"--"_s, u"0"_s},
        {u"pos='31:0' rst='BASE'"_s, u"--"_s, u"0"_s},
        {u"pos='7:0' cut='2' rst='7'"_s, u"--"_s, u"3"_s},
        {u"pos='2147483647:-2147483647' rst='all1'"_s, u"--"_s, u"4294967295"_s},
    };
    for (const Row &row : rows) {
        const Loaded soc = withRegister(u"<bits name='f' %1/>"_s.arg(row.attributes));
        const VMBitField &field = *registerOf(soc).bitFields.at(0);
        EXPECT_EQ(field.getAccessString(), row.access) << row.attributes.toStdString();
        EXPECT_EQ(field.getResetString(DISPLAY_DEC), row.reset) << row.attributes.toStdString();
    }
}

TEST(Bits, CutsIntoPiecesAndAGroup)
{
    const std::pair<QString, QStringList> rows[] = {
        {u"pos='7:0' cut='2'"_s, {u"0 1:0 (1:0)"_s, u"1 3:2 (3:2)"_s, u"2 5:4 (5:4)"_s, u"3 7:6 (7:6)"_s}},
        {u"pos='3:0' cut='2' cutprefix='P' cutstart='BASE'"_s, {u"P_4 1:0 (1:0)"_s, u"P_5 3:2 (3:2)"_s}},
        {u"pos='BASE+7:BASE' cut='4'"_s, {u"0 7:4 (BASE+3:BASE)"_s, u"1 11:8 (BASE+7:BASE+4)"_s}},
        {u"pos='3:0' cut='1' cutenum='abc'"_s,
         {u"A 0:0 (0:0)"_s, u"B 1:1 (1:1)"_s, u"C 2:2 (2:2)"_s, u"3 3:3 (3:3)"_s}},
        {u"pos='1:0' cut='1' cutenum='abc' cutprefix='q' cutstart='1'"_s, {u"q_B 0:0 (0:0)"_s, u"q_C 1:1 (1:1)"_s}},
        {u"pos='7:0' cut='8'"_s, {u"F 7:0 (7:0)"_s}},
    };
    for (const auto &[attributes, expected] : rows) {
        const Loaded soc = withRegister(u"<bits name='F' %1 access='rw' display='hex'><comment>c</comment>"_s
                                        "<options><option name='o' value='1'/></options></bits>"_s.arg(attributes));
        EXPECT_EQ(positionsOf(soc), expected);
        const VMValuable &reg = registerOf(soc);
        ASSERT_EQ(reg.bitGroups.size(), expected.size() > 1 ? 1u : 0u);
        for (const auto &piece : reg.bitFields) {
            EXPECT_EQ(piece->comment, u"c<table><tr><td>0x1</td><td>o</td></tr></table>"_s);
            EXPECT_EQ(piece->getAccessString(), u"rw"_s);
            EXPECT_EQ(piece->parent, &reg);
        }
        if (!reg.bitGroups.empty()) {
            EXPECT_EQ(reg.bitGroups.at(0)->name, u"F"_s);
            EXPECT_EQ(reg.bitGroups.at(0)->size(), expected.size());
        }
    }
}

TEST(Bits, GroupsFlattenOtherGroups)
{
    const Loaded soc =
        withRegister(u"<bits name='a' pos='9:8'/><bits name='F' pos='3:0' cut='2'/><bits name='F' pos='12'/>"_s
                     "<bitgroup name='g'><entry ref='F'/><entry ref='a'/></bitgroup>"_s);
    QStringList names;
    for (const VMBitField *field : *registerOf(soc).getBitGroupByName(u"g"_s))
        names += field->getName() + u'@' + field->downPosExpression;
    EXPECT_EQ(names, QStringList({u"F@12"_s, u"0@0"_s, u"1@2"_s, u"a@8"_s}));
}

TEST(Bits, OptionsOfALinkedEnumAndTheirFlags)
{
    const Loaded soc = withRegister(u"<bits name='f' pos='3:0'><options linkenum='abc'><default/><shift/></options>"_s
                                    "<options><option name='x-y'/></options></bits>"_s);
    const VMBitFieldOptions &options = registerOf(soc).bitFields.at(0)->options;
    QStringList names;
    for (const VMBitFieldOption &option : options.optionList)
        names += option.name + u'=' + QString::number(option.value);
    EXPECT_EQ(names, QStringList({u"A=9"_s, u"B=10"_s, u"C=11"_s, u"x_y=0"_s}));
    EXPECT_TRUE(options.hasDefault && options.hasShift && !options.hasMask);
}

TEST(Bits, PackedWord)
{
    const std::pair<QString, QStringList> rows[] = {
        {u"<bits name='a' pos='0'/><bits name='b' pos='5:4'/><bits name='c' pos='BASE-1:0'/><bits name='d' pos='9'/>"_s,
         {u"0:0 (0:0)"_s, u"2:1 (2:1)"_s, u"6:3 (3+BASE-1:3)"_s, u"7:7 (3+BASE-1+1:3+BASE-1+1)"_s}},
        {u"<bits name='a' pos='31:30'/><bits name='b' pos='1:0'/>"_s, {u"1:0 (1:0)"_s, u"3:2 (3:2)"_s}},
        {u"<bits name='a' pos='BASE:exp2(1)'/><bits name='b' pos='BASE:3'/>"_s,
         {u"2:0 (BASE-2**(1):0)"_s, u"4:3 (BASE-2**(1)+1+BASE-3:BASE-2**(1)+1)"_s}},
        {u"<bits name='a' pos='0x5:5'/>"_s, {u"0:0 (16#5#-5:0)"_s}},
    };
    for (const auto &[content, expected] : rows) {
        const Loaded soc = withRegister(content);
        QStringList positions;
        for (const auto &field : registerOf(soc).bitFields)
            positions +=
                u"%1:%2 (%3:%4)"_s.arg(QString::number(field->physicalUpPos), QString::number(field->physicalDownPos),
                                       field->physicalUpPosExpression, field->physicalDownPosExpression);
        EXPECT_EQ(positions, expected);
        EXPECT_EQ(registerOf(soc).physicalName, registerOf(soc).bitFields.back()->physicalUpPosExpression);
    }
}
