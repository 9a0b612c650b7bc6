#include "expression/evaluation_context.h"

#include "values.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

using cexev::CExEvCtx;
using variant::Variant;

namespace {

/// What a call in words, the name and then its arguments, gives, or "fails"; a failed call must leave a Null result.
template <typename Call>
std::string outcome(const Call &call, const std::string &asked)
{
    std::vector<std::string> words = wordsOf(asked);
    std::vector<Variant> values;
    std::transform(words.begin() + 1, words.end(), std::back_inserter(values), valueOf);
    std::vector<Variant *> arguments;
    for (Variant &value : values)
        arguments.push_back(&value);
    return written(
        [&](Variant &result) { return call(words.front().c_str(), int(arguments.size()), arguments.data(), result); },
        "0");
}

std::string ofOperator(const std::string &asked)
{
    return outcome([](auto &&...call) { return CExEvCtx().callOperator(call...); }, asked);
}

TEST(ContextOperators, RowIsChosenByArgumentsAndOrder)
{
    const Rows rows = rowsOf(R"(
        + Sa = fails           + I1 Sx = S1x          + R1.5 Sx = S1.5000x   + Sx I1 = Sx1
        + Sx Sy = Sxy          + 0 Sx = Sx            + I1 I2 = I3           + X1 I2 = fails
        + Sx XJ = Sx4A
        + = fails              + I1 I2 I3 = fails     - Sx I1 = fails        * I1 = fails
        ! I1 I2 = fails        = I1 I2 = fails
        + B5 = B1 // a Bool stays one
        sin I0 = fails // a function is no operator)");
    for (const auto &[asked, expected] : rows)
        EXPECT_EQ(ofOperator(asked), expected) << asked;
}

TEST(ContextOperators, UnaryOperatorsFollowTheType)
{
    const Rows rows = rowsOf(R"(
        + = B1 B0 I5 I-2147483648 D1 D0 R0 R1.5 Rnan fails fails fails fails
        - = I-5 I0 I-5 I-2147483648 D4294967295 D0 R-0 R-1.5 R-nan fails fails fails fails
        ~ = fails fails I-6 I2147483647 D4294967294 D4294967295 fails fails fails fails fails fails fails
        ! = B0 B1 B0 B0 B0 B1 B1 B0 B0 fails fails fails fails)");
    for (const auto &[name, expected] : rows) {
        std::string outcomes;
        for (const char *operand :
             {"B5", "B0", "I5", "I-2147483648", "D1", "D0", "R0", "R1.5", "Rnan", "0", "Sa", "Xa", "P"})
            outcomes += ' ' + ofOperator(name + ' ' + operand);
        EXPECT_EQ(outcomes, ' ' + expected) << name;
    }
}

TEST(ContextOperators, RowsOfTwoNumbers)
{
    const Rows rows = rowsOf(R"(
        >> I-8 I1 = I-4   << I3 I2 = I12   <= I2 I2 = B1   >= I1 I2 = B0   != I1 I2 = B1   == I1 I1 = B1
        < I1 I2 = B1      > I1 I2 = B0     ^ I6 I3 = I5    & I6 I3 = I2    | I6 I3 = I7    % I7 I4 = I3
        && I1 I0 = B0     || I0 I2 = B1    || I0 I0 = B0)");
    for (const auto &[asked, expected] : rows)
        EXPECT_EQ(ofOperator(asked), expected) << asked;
}

TEST(ContextFunctions, SinTakesOneNumber)
{
    const Rows rows = rowsOf(R"(
        sin I0 = R0   sin R0.5 = R0.47942553860420301   sin B7 = R0.8414709848078965
        sin Sa = fails   sin = fails   sin I0 I0 = fails   Sin I0 = fails   + I0 = fails)");
    for (const auto &[asked, expected] : rows)
        EXPECT_EQ(outcome([](auto &&...call) { return CExEvCtx().callFunction(call...); }, asked), expected) << asked;
}

template <int Row>
int answerRow(int, Variant **, Variant &result)
{
    result.setInt(Row);
    return 1;
}

int refuse(int, Variant **, Variant &)
{
    return 0;
}

TEST(ContextMatching, FirstRowThatFitsWins)
{
    const CExEvCtx::SFunctionDef table[] = {
        {"f", "RIS", "", answerRow<1>},       {"f", "?I?", "", answerRow<2>}, {"g", "?I?", "", refuse},
        {"g", "???", "", answerRow<3>},       {"h", "?I*", "", answerRow<4>}, {"h", "?", "", answerRow<5>},
        {"h", "*", "", answerRow<6>},         {"n", "?0", "", answerRow<7>},  {"e", "", "", answerRow<8>},
        {nullptr, nullptr, nullptr, nullptr},
    };
    const Rows rows = rowsOf(R"(
        f I1 Sa = I1      f I1 I1 = I2      f D1 Sa = fails   f I1 = fails      F I1 Sa = fails
        g D1 I1 = I3      h I1 Sa X = I4    h = I5            h Sa Sa = I6      n 0 = I7
        n B0 = fails      e = fails
        g I1 I1 = fails // a handler's refusal is not passed on to a later row
        h I1 = I6 // the '*' of the first row asks for one argument at least)");
    for (const auto &[asked, expected] : rows)
        EXPECT_EQ(outcome([&](auto &&...call) { return CExEvCtx().doCallFunction(table, call...); }, asked), expected)
            << asked;
}

TEST(ContextIdentifiers, OnlyPiIsKnown)
{
    CExEvCtx context;
    Variant value;
    EXPECT_EQ(context.getValue("pi", value), 1);
    EXPECT_EQ(value.getReal(), 3.141592653);
    EXPECT_EQ(context.getValue("Pi", value), 0);
    EXPECT_EQ(value.getType(), Variant::kNull);
}

TEST(ContextIdentifiers, LettersBeginThemAndMarksContinueThem)
{
    const std::string letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_";
    const std::string marks = "0123456789.:?";
    CExEvCtx context;
    for (int c = 1; c < 256; ++c) {
        const bool isLetter = letters.find(static_cast<char>(c)) != std::string::npos;
        const bool isMark = marks.find(static_cast<char>(c)) != std::string::npos;
        EXPECT_EQ(context.isValidIdentStartChar(c) != 0, isLetter) << c;
        EXPECT_EQ(context.isValidIdentChar(c) != 0, isLetter || isMark) << c;
    }
}

TEST(ContextIdentifiers, ContinuingCharactersAskTheOverridingStart)
{
    struct DollarContext : CExEvCtx {
        int isValidIdentStartChar(int c) override { return c == '$'; }
    } context;
    EXPECT_NE(context.isValidIdentChar('$'), 0);
    EXPECT_NE(context.isValidIdentChar('.'), 0);
    EXPECT_EQ(context.isValidIdentChar('a'), 0);
}

} // namespace
