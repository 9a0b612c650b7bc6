// Numbers of IP-XACT documents, which are expressions of SystemVerilog in parameters.

#include "import/ipxact_expression.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Qt::StringLiterals;

namespace {

veldmap::IpxactParameters parameters()
{
    veldmap::IpxactParameters all;
    all.add(u"uuid_11795f77_041d"_s, u"16"_s);
    all.add(u"WIDTH"_s, u"uuid_11795f77_041d*2"_s);
    all.add(u"WIDTH"_s, u"99"_s); // the first counts
    all.add(u"id.with.dots"_s, u"'h40"_s);
    all.add(u"here"_s, u"there+1"_s);
    all.add(u"there"_s, u"here-1"_s);
    all.add(u"bad"_s, u"1 +"_s);
    return all;
}

TEST(IpxactExpression, HasAValue)
{
    const std::vector<std::pair<QStringView, qint64>> rows = {
        {u"16", 16},
        {u" 1_000 ", 1000},
        {u"'h10", 16},
        {u"32'hFF", 255},
        {u"8'b1010_0101", 0xA5},
        {u"'o17", 15},
        {u"12'd99", 99},
        {u"8'sh7f", 127},
        {u"0x1F", 31},
        {u"#1f", 31},
        {u"4K", 4096},
        {u"2g", 0x80000000},
        {u"1+2*3", 7},
        {u"(1+2)*3", 9},
        {u"2*2**3", 16},
        {u"10-3-2", 5},
        {u"-2+5", 3},
        {u"- -2", 2},
        {u"!0+~0", 0},
        {u"7/2", 3},
        {u"7%4", 3},
        {u"1<<4|1", 17},
        {u"'h80>>3", 16},
        {u"6&3^1", 3},
        {u"3<4&&4<=4&&5>4&&5>=5", 1},
        {u"1==2||2!=2", 0},
        {u"1?10:20", 10},
        {u"0?10:1?20:30", 20},
        {u"$clog2(16)", 4},
        {u"$clog2(17)", 5},
        {u"$clog2(1)+$clog2(0)", 0},
        {u"$pow(2,10)", 1024},
        {u"$max(3,$min(9,5))-$abs(-2)", 3},
        {u"uuid_11795f77_041d/8", 2},
        {u"WIDTH*id.with.dots", 2048},
        {u"-9223372036854775807-1", std::numeric_limits<qint64>::min()},
        {u"(-9223372036854775807-1)/-1", std::numeric_limits<qint64>::min()},
        {u"(-9223372036854775807-1)%-1", 0},
        {u"1<<64", 0},
        {u"18446744073709551615", -1},
    };
    veldmap::IpxactParameters all = parameters();
    for (const auto &[text, value] : rows)
        EXPECT_EQ(all.valueOf(text), value) << text.toUtf8().constData();
}

TEST(IpxactExpression, HasNone)
{
    veldmap::IpxactParameters all = parameters();
    for (const QStringView text : {u"",
                                   u" ",
                                   u"1 2",
                                   u"1+",
                                   u"*2",
                                   u"(1",
                                   u"1)",
                                   u"()",
                                   u"1/0",
                                   u"1%0",
                                   u"2**-1",
                                   u"'hxz",
                                   u"'q1",
                                   u"'h",
                                   u"8'",
                                   u"0x",
                                   u"#",
                                   u"12a",
                                   u"1__x",
                                   u"unknown",
                                   u"here",
                                   u"there",
                                   u"bad",
                                   u"$clog2",
                                   u"$clog2()",
                                   u"$clog2(1,2)",
                                   u"$pow(2)",
                                   u"$nothing(1)",
                                   u"1?2",
                                   u"1?2:",
                                   u"18446744073709551616",
                                   u"\"16\"",
                                   u"1.5",
                                   u"K",
                                   u"\u0663"})
        EXPECT_FALSE(all.valueOf(text)) << text.toUtf8().constData();
}

TEST(IpxactExpression, EndsWithWhatNeverEnds)
{
    veldmap::IpxactParameters all;
    constexpr int kMany = 100'000;
    EXPECT_FALSE(all.valueOf(QString(kMany, u'(') + u'1' + QString(kMany, u')')));
    EXPECT_EQ(all.valueOf(QString(2 * kMany, u'-') + u'1'), 1);
    for (int at = 0; at < kMany; ++at)
        all.add(u"p%1"_s.arg(at), u"p%1"_s.arg(at + 1));
    EXPECT_FALSE(all.valueOf(u"p0"));
    QString sum = u"1"_s;
    for (int at = 1; at < kMany; ++at)
        sum += u"+1"_s;
    EXPECT_EQ(all.valueOf(sum), kMany);
}

} // namespace
