// The rules on names, literals and columns that the loader and the generators share.

#include "support/loaded.h"

#include "headers/c_names.h"
#include "text/columns.h"
#include "text/literals.h"
#include "text/names.h"
#include "vhdl/notation.h"

using namespace Qt::StringLiterals;

namespace {

struct Row {
    QString input;
    QString expected;
};

template <typename Function>
void expectAll(const Function &function, const std::vector<Row> &rows)
{
    for (const Row &row : rows)
        EXPECT_EQ(function(row.input), row.expected) << row.input.toStdString();
}

} // namespace

TEST(Text, Names)
{
    expectAll(regularizeVariableName,
              {{u"foo-bar baz.1"_s, u"foo_bar_baz_1"_s}, {u""_s, u""_s}, {u"é€9"_s, u"__9"_s}, {u"ok_1"_s, u"ok_1"_s}});
    expectAll(ESDRConvert, {{u"myRegName"_s, u"myRegName"_s},
                            {u"MY_REG"_s, u"myReg"_s},
                            {u"SYS_CTRL_Reg"_s, u"sysCtrlReg"_s},
                            {u"_abc"_s, u"Abc"_s},
                            {u"a__b"_s, u"aB"_s},
                            {u"abc_"_s, u"abc_"_s},
                            {u"abc__"_s, u"abc_"_s},
                            {u"_"_s, u"_"_s},
                            {u"a_1"_s, u"a1"_s},
                            {u""_s, u""_s}});
    expectAll(ESDRTypeConvert, {{u"uint32"_s, u"UINT32"_s},
                                {u"Int16"_s, u"INT16"_s},
                                {u"my_type"_s, u"MY_TYPE_T"_s},
                                {u"MY_TYPE_T"_s, u"MY_TYPE_T"_s},
                                {u"my_type_t"_s, u"MY_TYPE_T_T"_s},
                                {u"reg"_s, u"REG_T"_s},
                                {u"ireg"_s, u"IREG_T"_s},
                                {u"memory"_s, u"MEMORY"_s}});
}

TEST(Text, Literals)
{
    expectAll(hexadecimalPreparseExpression, {{u"0x10"_s, u"16"_s},
                                              {u"0xFFFFFFFF"_s, u"4294967295"_s},
                                              {u"0x123456789"_s, u"4294967295"_s},
                                              {u"(0x10+0b11)*2"_s, u"(16+3)*2"_s},
                                              {u"0x10+0x20"_s, u"16+32"_s},
                                              {u"FOO_0x10"_s, u"FOO_0x10"_s},
                                              {u"00x10"_s, u"00x10"_s},
                                              {u"é0x10"_s, u"é16"_s},
                                              {u"0b2"_s, u"0b2"_s},
                                              {u"0b12"_s, u"12"_s},
                                              {u"0XAB 0Xg"_s, u"171 0Xg"_s},
                                              {u"7*8"_s, u"7*8"_s}});
    expectAll([](const QString &text) { return QString::number(convertBinaryStringToUnsignedInt(text)); },
              {{u"0b101"_s, u"5"_s},
               {u"0B11"_s, u"3"_s},
               {u"1x1"_s, u"5"_s},
               {u""_s, u"0"_s},
               {u"1"_s + QString(32, u'0'), u"0"_s}});
    expectAll(vhdl_clean_expr, {{u"0x1F"_s, u"16#1F#"_s},
                                {u"0X1F+A"_s, u"16#1F#+A"_s},
                                {u"A+0X10+B"_s, u"A+16#10#+B"_s},
                                {u"FOO_0x10"_s, u"FOO_0x10"_s},
                                {u"EXP2(a)+exp2(b)"_s, u"2**(a)+2**(b)"_s},
                                {u"exp2(exp2(1))"_s, u"2**(exp2(1))"_s},
                                {u"W-1"_s, u"W-1"_s}});
}

TEST(Text, CommentsBreakBehindTheWordThatReachesTheWidth)
{
    struct Comment {
        QString text;
        int width;
        int indent;
        QString expected;
    };
    const Comment rows[] = {
        {u"one two<br>three"_s, 80, 0, u"/// one two\n/// three"_s},
        {u"abc<br>"_s, 80, 0, u"/// abc\n/// "_s},
        {u""_s, 80, 1, u"    /// "_s},
        {u"aaaa bbbb cccc dddd eeee ffff gggg hhhh iiii jjjj"_s, 45, 0,
         u"/// aaaa bbbb cccc dddd eeee ffff gggg hhhh iiii\n/// jjjj"_s},
        {u"a\tb"_s, 80, 0, u"/// a\tb"_s},
        {QString(39, u'a') + u" b"_s, 48, 1, u"    /// "_s + QString(39, u'a') + u" b"_s},
        {QString(40, u'a') + u" b"_s, 48, 1, u"    /// "_s + QString(40, u'a') + u"\n    /// b"_s},
        // 40 columns are too few at level 1, where lines get 47.
        {u"aaaaaaaaa bbbbbbbbb ccccccccc ddddddddd eeeeeeeee f"_s, 40, 1,
         u"    /// aaaaaaaaa bbbbbbbbb ccccccccc ddddddddd\n    /// eeeeeeeee f"_s},
    };
    for (const Comment &row : rows)
        EXPECT_EQ(convertCommentToCComment(row.text, row.width, row.indent), row.expected);
    EXPECT_EQ(space_complement_to(u"abc"_s, 6).size(), 3);
    EXPECT_EQ(space_complement_to(u"abcdefg"_s, 6).size(), 1);
}
