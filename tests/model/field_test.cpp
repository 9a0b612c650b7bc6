// The texts of values, and what groups of bitfields answer.

#include "support/loaded.h"

#include "model/pointer.h"
#include "model/scalars.h"

using namespace Qt::StringLiterals;

namespace {

VMBitField *addField(VMValuable &valuable, int up, int down, int writeMode = 1, bool readable = true)
{
    auto field = std::make_unique<VMBitField>(u"f%1"_s.arg(valuable.bitFields.size()), readable, writeMode,
                                              u"U%1"_s.arg(up), up, u"D%1"_s.arg(down), down, 0, false, DISPLAY_DEC);
    valuable.addBitField(field.release());
    return valuable.bitFields.back().get();
}

} // namespace

TEST(Values, TextsInEveryDisplay)
{
    struct Row {
        std::unique_ptr<VMValuable> valuable;
        unsigned int value;
        QString hex, bin, dec, byDefault;
    };
    Row rows[] = {
        {std::make_unique<VMUnsignedInt8>(u"v"_s), 5, u"0x5"_s, u"0b00000101"_s, u"5"_s, u"5"_s},
        {std::make_unique<VMInt16>(u"v"_s), 0xFFFFFFFE, u"0xFFFE"_s, u"0b1111111111111110"_s, u"-2"_s, u"-2"_s},
        {std::make_unique<VMInt8>(u"v"_s), 0x1FF, u"0xFF"_s, u"0b11111111"_s, u"-1"_s, u"-1"_s},
        {std::make_unique<VMRegister32>(u"v"_s, true, false), 0xDEADBEEF, u"0xDEADBEEF"_s,
         u"0b11011110101011011011111011101111"_s, u"3735928559"_s, u"0xDEADBEEF"_s},
        {std::make_unique<VMRegister16>(u"v"_s, true, true), 0x10000, u"0x0"_s, u"0b0000000000000000"_s, u"0"_s,
         u"0x0"_s},
        {std::make_unique<VMBoolean>(u"v"_s), 1, u"0x1"_s, u"0b00000001"_s, u"1"_s, u"1"_s},
        {std::make_unique<VMVoid>(u"v"_s), 16, u"0x10"_s, u"0b00000000000000000000000000010000"_s, u"16"_s, u"0x10"_s},
        {std::make_unique<VMRegister8>(u"v"_s, false, true), 1, u"?"_s, u"?"_s, u"?"_s, u"?"_s},
    };
    for (Row &row : rows) {
        row.valuable->setValue(row.value);
        EXPECT_EQ(row.valuable->getValueString(DISPLAY_HEX), row.hex);
        EXPECT_EQ(row.valuable->getValueString(DISPLAY_BIN), row.bin);
        EXPECT_EQ(row.valuable->getValueString(DISPLAY_DEC), row.dec);
        EXPECT_EQ(row.valuable->getValueString(DISPLAY_DEFAULT), row.byDefault);
    }
}

TEST(Values, FieldsOfARegister)
{
    VMRegister32 reg(u"r"_s, true, true);
    reg.setValue(0xA5);
    VMBitField &field = *addField(reg, 7, 4);
    field.options.optionList = {{u"LOW"_s, 10, {}}, {u"SECOND"_s, 10, {}}, {u"NEG"_s, -1, u"c"_s}};
    EXPECT_EQ(field.getValue(), 0xAu);
    EXPECT_EQ(field.getFullValueUnshifted(), 0xF0u);
    EXPECT_EQ(field.getFullValueShifted(), 0xFu);
    EXPECT_EQ(field.getBitString(), u"1010"_s);
    EXPECT_EQ(field.sizeOf(), 0);
    EXPECT_EQ(field.getValueString(DISPLAY_HEX, false, false), u"0xA (LOW)"_s);
    EXPECT_EQ(field.getValueString(DISPLAY_HEX, true, false), u"LOW"_s);
    EXPECT_EQ(field.convertValueToValueString(0x1B, DISPLAY_BIN, true, false), u"0b1011"_s);
    EXPECT_EQ(field.getValueFromOptionName(u"NEG"_s), -1);
    EXPECT_EQ(field.getValueFromOptionName(u"none"_s), 0);
    EXPECT_EQ(field.generateOptionsComment(),
              u"<table><tr><td>10</td><td>LOW</td></tr><tr><td>10</td><td>SECOND</td></tr>"_s
              "<tr><td>15</td><td>NEG</td><td>c</td></tr></table>"_s);

    VMBitField &writeOnly = *addField(reg, 0, 0, 3, false);
    EXPECT_EQ(writeOnly.getAccessString(), u"-c"_s);
    EXPECT_EQ(writeOnly.getValueString(DISPLAY_DEC, false, false) + writeOnly.getBitString(), u"??"_s);
    EXPECT_EQ(writeOnly.getValueString(DISPLAY_DEC, false, true), u"1"_s);
    addField(reg, 3, 2, 2);
    EXPECT_EQ(reg.getValueForWritingBitfieldFromCache(0xFF), 0xF2u);
    EXPECT_EQ(reg.getValueForWritingBitfield(), 0xA0u);
    reg.readable = false;
    EXPECT_EQ(field.getBitString(), u"?"_s);
}

TEST(Values, ResetTexts)
{
    VMRegister8 reg(u"r"_s, true, true);
    VMBitField &field = *addField(reg, 2, 0);
    EXPECT_EQ(field.getResetString(DISPLAY_HEX), u"-"_s);
    field.hasReset = true;
    const std::tuple<unsigned int, QString, QString> rows[] = {
        {0, u"0"_s, u"000"_s}, {1, u"1"_s, u"001"_s}, {2, u"0x2"_s, u"0b010"_s}, {7, u"0x7"_s, u"0b111"_s}};
    for (const auto &[value, hex, bin] : rows) {
        field.resetValue = value;
        EXPECT_EQ(field.getResetString(DISPLAY_HEX), hex);
        EXPECT_EQ(field.getResetString(DISPLAY_BIN), bin);
        EXPECT_EQ(field.getResetString(DISPLAY_DEFAULT), QString::number(value));
    }
}

TEST(Values, FieldsAtTheEdgesOfAWord)
{
    struct Row {
        int up, down;
        unsigned int inPlace, shifted;
        int bits;
    };
    const Row rows[] = {
        {31, 0, 0xFFFFFFFF, 0xFFFFFFFF, 32},
        {31, 31, 0x80000000, 1, 1},
        {35, 30, 0xC0000000, 3, 6},
        {40, 33, 0, 0, 8},
        {3, -2, 0xF, 0x3C, 6},
        {-1, -3, 0, 0, 3},
        {0, 5, 0, 0, -4},
        {2147483647, -2147483647, 0xFFFFFFFF, 0, -1},
    };
    VMRegister32 reg(u"r"_s, true, true);
    for (const Row &row : rows) {
        const VMBitField &field = *addField(reg, row.up, row.down);
        EXPECT_EQ(field.getFullValueUnshifted(), row.inPlace) << row.up << ':' << row.down;
        EXPECT_EQ(field.getFullValueShifted(), row.shifted) << row.up << ':' << row.down;
        EXPECT_EQ(field.getBitSize(), row.bits) << row.up << ':' << row.down;
    }
}

TEST(Groups, BitsAndExpressions)
{
    VMRegister32 reg(u"r"_s, true, true);
    VMBitField *low = addField(reg, 1, 0);
    VMBitField *high = addField(reg, 5, 4);
    reg.buildPhysicalMap();
    for (const QList<VMBitField *> &fields : {QList{low, high}, QList{high, low}}) {
        VMBitGroup group(u"g"_s, &reg);
        for (VMBitField *field : fields)
            group.addBitField(field);
        EXPECT_EQ(group.getShift(), 0);
        EXPECT_EQ(group.getTotalBits(), 4);
        EXPECT_EQ(group.getFullValueShifted(), 0x33u);
        EXPECT_FALSE(group.isContiguous());
        EXPECT_TRUE(group.isPhysicalContiguous());
        EXPECT_EQ(group.getUpPosExpression() + group.getDownPosExpression(), u"U5D0"_s);
    }
    const VMBitGroup empty(u"e"_s, &reg);
    EXPECT_EQ(empty.getShift(), 32);
    EXPECT_TRUE(empty.isContiguous());
    EXPECT_EQ(empty.getTotalBits(), 0);
    EXPECT_EQ(empty.getUpPosExpression(), QString());
    VMBitGroup outside(u"o"_s, &reg);
    outside.addBitField(addField(reg, 40, 36));
    EXPECT_EQ(outside.getDownPosExpression(), QString());
    EXPECT_EQ(outside.getFullValueShifted(), 0u);
}
