#include "expression/evaluator.h"
#include "values.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstring>
#include <map>
#include <new>
#include <string>
#include <vector>

using cexev::CExEv;
using cexev::CExEv_Token;
using cexev::CExEvCtx;
using variant::Variant;

namespace {

/// The value of an expression, or "error" and its code. An error must leave a Null result.
std::string outcome(CExEv &evaluator, const char *expression)
{
    Variant result;
    result.setString("stale");
    const int error = evaluator.evalExpression(expression, result);
    if (error == 0)
        return shown(result);
    return "error " + std::to_string(error) + (shown(result) == "0" ? "" : " with a result");
}

std::string sineOf(double radians)
{
    Variant value;
    value.setReal(std::sin(radians));
    return shown(value);
}

void expectOutcomes(CExEv &evaluator, const Rows &rows)
{
    ASSERT_FALSE(rows.empty());
    for (const auto &[expression, expected] : rows)
        EXPECT_EQ(outcome(evaluator, expression.c_str()), expected) << expression.substr(0, 60);
}

/// The same without variables: each with an evaluator of its own, and with one for all, so that an error which outlives
/// its expression shows in the next row.
void expectOutcomes(const Rows &rows)
{
    CExEv shared;
    expectOutcomes(shared, rows);
    for (const auto &row : rows) {
        CExEv fresh;
        expectOutcomes(fresh, {row});
    }
}

/// Knows the variables that it is given and a function that gives back its argument; counts what it is asked.
class VariableContext : public CExEvCtx {
public:
    std::map<std::string, int> values;
    std::vector<std::string> asked;

    int getValue(const char *name, Variant &result) override
    {
        asked.emplace_back(name);
        const auto row = values.find(name);
        if (row == values.end())
            return CExEvCtx::getValue(name, result);
        result.setInt(row->second);
        return 1;
    }

    int callFunction(const char *name, int argc, Variant **argv, Variant &result) override
    {
        if (std::strcmp(name, "same") != 0 || argc != 1)
            return CExEvCtx::callFunction(name, argc, argv, result);
        result = *argv[0];
        return 1;
    }
};

TEST(Evaluation, PrecedenceAndAssociativity)
{
    expectOutcomes(rowsOf(R"(
        1+2*3 = I7                 3-2-1 = I0                 2*3%4 = I2                 -2+3 = I-5
        -2+3*4 = I-14              -2*3+4 = I-2               !1&&0 = B1                 (!1)&&0 = B0
        ~1+1 = I-3                 (~1)+1 = I-1               1-(-2) = I3                2*-3 = error 6
        1+-2 = error 6             - -1 = error 6             1+2) = error 6             (1+2 = error 9
        sin(1+2+3) = error 6       sin(1*2+3) = error 6       sin(1,2) = error 6         sin((1),(2)) = error 6
        sin(1+2,3) = error 6       sin() = error 7            sin(1 = error 6            sin( = error 6
        () = error 6               (1)(2) = error 6           2(3) = error 6             1 2 = error 6
        1,2 = error 6              (1,2) = error 6            *3 = error 8               1!2 = error 7
        1~2 = error 7              1=2 = error 1              $ = error 1                .5 = error 1
        1.2.3 = error 1            0x10 = error 6             1e3 = R1000                1e1234 = error 6
        2147483648 = D2147483648   4294967296 = D4294967295   1/0 = error 7              1.0/0 = error 7
        1/0.0 = error 7            -"a" = error 8             "a"+1 = Sa1                'A' = I65
        abc = error 5)"));
    expectOutcomes({{"sin(1+2)", sineOf(3)},
                    {"sin(1+2*3)", sineOf(7)},
                    {"sin((1+2)+3)", sineOf(6)},
                    {"", "error 6"},
                    {" \t", "error 6"}});
}

TEST(Evaluation, UnaryOperatorTakesAllThatFollows)
{
    expectOutcomes(rowsOf(R"(
        (-2)+3 = I1   -2-3*4-5 = I5   1*(-2+3) = I-5   -sin(0) = R-0   -pi = R-3.141592653
        -(2)+3 = I-5 // parentheses around the operand make no difference
        -2+3+4 = I-1 // the second + comes down to the minus before 4 is added
        ~0&&1 = error 8 // the Bool of the logical operation has no bits)"));
    expectOutcomes({{"sin(-2+3)", sineOf(-5)}});
}

TEST(Evaluation, ResultKeepsItsType)
{
    expectOutcomes(rowsOf(R"(
        2147483647 = I2147483647      2147483647+1 = I-2147483648   2147483648-1 = D2147483647
        -2147483648 = D2147483648     1.5+1 = R2.5                  1==1 = B1
        (1==1)+(2==2) = I2            10/4294967295 = I-10          "1"=="1" = B1
        "1"==1 = error 7              1+"x"+2 = S1x2                1.5+"x" = S1.5000x)"));
}

TEST(Tokens, Numbers)
{
    expectOutcomes(rowsOf(R"(
        0 = I0                       007 = I7                     1. = R1
        1.5 = R1.5                   0.1 = R0.10000000000000001   1e = R1
        1E+ = R1                     1e- = R1                     1e+2 = R100
        15e-1 = R1.5                 1.e2 = R100                  1e001 = R10
        1e999 = Rinf                 1e+999 = Rinf                1e-999 = R0
        0e999 = R0                   0.0001e312 = R1e+308         0.0001e400 = Rinf
        1000000e-400 = R0            1e2e3 = error 6              1.2e3.4 = error 1
        1e1-1 = R9                   12abc = error 6
        99999999999999999999999999 = D4294967295   4.9e-324 = R4.9406564584124654e-324
        1e0012 = error 6 // three digits of the exponent, then the number 2
        1-1 = I0 // a sign is never part of a number)"));
    expectOutcomes({{"1" + std::string(400, '0') + ".", "Rinf"},
                    {"0." + std::string(400, '0') + "1", "R0"},
                    {"0." + std::string(400, '0') + "1e401", "R1"}});
}

TEST(Tokens, Texts)
{
    const Rows rows = {
        {R"("")", "S"},           {R"("a\tb")", "Sa\tb"},   {R"("\\\'\"\t\n\r\b\a")", "S\\'\"\t\n\r\b\a"},
        {R"("it's")", "Sit's"},   {R"("a\qb")", "error 1"}, {R"("a\0b")", "error 1"},
        {R"("a)", "error 1"},     {R"("a\)", "error 1"},    {R"("a\")", "error 1"},
        {R"(")", "error 1"},      {"\"a\nb\"", "Sa\nb"},    {"\"\xC3\xA9\"", "S\xC3\xA9"},
        {R"("a""b")", "error 6"},
    };
    expectOutcomes(rows);
}

TEST(Tokens, CharacterConstants)
{
    const Rows rows = {
        {"'A'+1", "I66"},   {"'''", "I39"},      {R"('\'')", "I39"},   {R"('\\')", "I92"},    {R"('"')", "I34"},
        {R"('\n')", "I10"}, {"'\xFF'", "I-1"},   {"' '", "I32"},       {"''", "error 1"},     {"'", "error 1"},
        {"'a", "error 1"},  {"'ab'", "error 1"}, {R"('\)", "error 1"}, {R"('\')", "error 1"}, {R"('\q')", "error 1"},
    };
    expectOutcomes(rows);
}

TEST(Tokens, BlanksSeparateAndMayBeLineEnds)
{
    expectOutcomes(rowsOf(R"(
        1 < < 2 = error 6   1&&&2 = error 6     1===2 = error 1     1<=>2 = error 6     sin (0) = R0)"));
    expectOutcomes({{" 1\n+\r\n\t2 ", "I3"}, {"1\v+2", "error 1"}, {"\xC3\xA9", "error 1"}});
}

TEST(Identifiers, ValuesAndFunctionsComeFromTheContext)
{
    VariableContext context;
    context.values = {{"BASE", 16}, {"uart.ctrl:0?", 3}, {"_x9", 4}};
    CExEv evaluator(&context);
    expectOutcomes(evaluator, rowsOf(R"(
        BASE+3 = I19                   uart.ctrl:0?*_x9 = I12         same(BASE)+same(_x9*2) = I24
        same(1,2) = error 6            sin(0*BASE) = R0               pi = R3.141592653)"));
}

TEST(Identifiers, AreAskedForWhenTheNextTokenIsRead)
{
    VariableContext context;
    context.values = {{"a", 1}, {"b", 2}};
    CExEv evaluator(&context);
    EXPECT_EQ(outcome(evaluator, "a+b*a"), "I3");
    EXPECT_EQ(context.asked, (std::vector<std::string>{"a", "b", "a"}));

    context.asked.clear();
    expectOutcomes(evaluator, rowsOf(R"(
        unknown $ = error 1 // the bad character is read first
        same (3) = I3 // a call is not looked up)"));
    EXPECT_TRUE(context.asked.empty());

    expectOutcomes(evaluator, rowsOf(R"(
        unknown 1 = error 5    a 1 = error 6          a a = error 6          unknown(1) = error 7
        sin = error 5          a(1) = error 7)"));
}

TEST(Identifiers, AlphabetIsTheContexts)
{
    struct GreedyContext : VariableContext {
        int isValidIdentStartChar(int c) override { return c == '$' || c >= 0x80; }
        int isValidIdentChar(int) override { return 1; }
    } context;
    context.values = {{"$a+1", 5}, {"\xC3\xA9", 6}};
    CExEv evaluator(&context);
    expectOutcomes(evaluator, rowsOf(R"(
        a = error 1
        $a+1 = I5 // and stops at the end of the text)"));
    expectOutcomes(evaluator, {{"\xC3\xA9", "I6"}});
}

TEST(Context, MayBeReplacedBetweenEvaluations)
{
    VariableContext context;
    context.values = {{"a", 1}};
    CExEv evaluator;
    EXPECT_EQ(outcome(evaluator, "a"), "error 5");
    evaluator.context = &context;
    EXPECT_EQ(outcome(evaluator, "a"), "I1");
    evaluator.context = nullptr;
    EXPECT_EQ(outcome(evaluator, "a"), "error 5");
    EXPECT_EQ(evaluator.context, &evaluator);

    struct OwnContext : CExEv {
        int getValue(const char *, Variant &result) override
        {
            result.setInt(9);
            return 1;
        }
    } own;
    EXPECT_EQ(outcome(own, "a"), "I9");
}

TEST(Context, OperatorsGoThroughItAndMayFail)
{
    struct NoSumContext : CExEvCtx {
        int callOperator(const char *name, int argc, Variant **argv, Variant &result) override
        {
            return std::strcmp(name, "+") == 0 ? 0 : CExEvCtx::callOperator(name, argc, argv, result);
        }
    } context;
    CExEv evaluator(&context);
    EXPECT_EQ(outcome(evaluator, "1-2"), "I-1");
    EXPECT_EQ(outcome(evaluator, "1+2"), "error 7");
    EXPECT_EQ(outcome(evaluator, "+2"), "error 8");
}

TEST(Failures, MemoryRunningOutIsAnErrorOfTheEvaluation)
{
    struct ExhaustedContext : CExEvCtx {
        int getValue(const char *, Variant &) override { throw std::bad_alloc(); }
    } context;
    CExEv evaluator(&context);
    EXPECT_EQ(outcome(evaluator, "1+a"), "error 2");
    EXPECT_EQ(outcome(evaluator, "1+2"), "I3");
}

TEST(Failures, FirstErrorStands)
{
    CExEv evaluator;
    evaluator.setError(7);
    evaluator.setError(6);
    evaluator.reduce(CExEv_Token::kTokenComma);
    EXPECT_EQ(evaluator.getError(), 7);
    evaluator.clear();
    EXPECT_EQ(evaluator.getError(), 0);
}

TEST(Failures, NullTextIsEmpty)
{
    CExEv evaluator;
    EXPECT_EQ(outcome(evaluator, nullptr), "error 6");
}

TEST(Evaluation, ResultMayHoldTheExpression)
{
    CExEv evaluator;
    Variant value;
    value.setString("1+2+3+4+5+6+7+8+9+10+11+12+13+14+15");
    EXPECT_EQ(evaluator.evalExpression(value.getString(), value), 0);
    EXPECT_EQ(shown(value), "I120");
}

std::string repeated(const std::string &piece, int count)
{
    std::string text;
    for (int index = 0; index < count; ++index)
        text += piece;
    return text;
}

TEST(Evaluation, LongAndDeepExpressionsTakeLinearTimeAndNoRecursion)
{
    constexpr int kDepth = 200000;
    VariableContext context;
    CExEv evaluator(&context);
    const Rows rows = {
        {repeated("(", kDepth), "error 6"},
        {repeated("(", kDepth) + "1" + repeated(")", kDepth), "I1"},
        {repeated("(", kDepth) + "1", "error 9"},
        {repeated("(-", kDepth) + "1" + repeated(")", kDepth), "I1"},
        {repeated("same(", kDepth) + "7" + repeated(")", kDepth), "I7"},
        {repeated("1+(", kDepth) + "1" + repeated(")", kDepth), "I200001"},
        {repeated("1+", kDepth) + "1", "I200001"},
        {repeated("1", 1000000), "D4294967295"},
        {repeated("1", 1000000) + ".", "Rinf"},
        {"0." + repeated("0", 1000000), "R0"},
        {repeated("a", 1000000), "error 5"},
        {repeated(" ", 1000000), "error 6"},
        {repeated("-", 1000000), "error 6"},
        {"\"" + repeated("a", 1000000) + "\"==\"\"", "B0"},
    };
    const auto start = std::chrono::steady_clock::now();
    expectOutcomes(evaluator, rows);
    // Linear work takes well under a second; work that grows with the square would take hours.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::minutes(1));
}

/// Puts a token of a kind on the evaluator's stack.
void stack(CExEv &evaluator, int kind, const char *text = nullptr)
{
    CExEv_Token *const token = evaluator.newToken();
    token->kind = kind;
    if (text)
        token->setString(text);
    evaluator.push();
}

TEST(TokenStack, ReducingRefusesWhatCannotBeFolded)
{
    const int kNull = CExEv_Token::kTokenNull;
    const int kConst = CExEv_Token::kTokenConst;
    const struct {
        std::vector<int> stack; // from the bottom
        int kind;
        int error;
    } rows[] = {
        {{}, kNull, 1},
        {{}, CExEv_Token::kTokenOperator, 1},
        {{kNull}, kNull, 1},
        {{kNull}, CExEv_Token::kTokenCParen, 1},
        {{kNull}, CExEv_Token::kTokenOperator, 0},
        {{kNull, kConst}, kNull, 0},
        {{kNull, kConst}, CExEv_Token::kTokenComma, 1},
        {{kNull, kConst}, CExEv_Token::kTokenCParen, 6},
        {{kNull, CExEv_Token::kTokenOParen}, CExEv_Token::kTokenCParen, 6},
        {{kNull, CExEv_Token::kTokenComma, kConst}, CExEv_Token::kTokenCParen, 6},
        {{kNull, kConst, kConst}, kNull, 6},
        {{kNull, CExEv_Token::kTokenFunc}, kNull, 6},
        {{CExEv_Token::kTokenOperator, kConst}, kNull, 8}, // an operator without a name
    };
    for (const auto &row : rows) {
        CExEv evaluator;
        for (const int kind : row.stack)
            stack(evaluator, kind);
        evaluator.reduce(row.kind);
        EXPECT_EQ(evaluator.getError(), row.error)
            << "row " << &row - rows << " with " << row.stack.size() << " tokens";
    }
}

TEST(Tokens, DumpShowsKindAndValue)
{
    const struct {
        int kind;
        const char *expected;
    } rows[] = {
        {0, "<NULL>"},        {1, "<UNKNOWN>"},         {0x101, "<CONST>[x]"}, {0x102, "<IDENT>[x]"},
        {0x201, "<OPAREN>("}, {0x202, "<CPAREN>)"},     {0x301, "<COMMA>,"},   {0x401, "<OPERATOR>x"},
        {0x402, "<FUNC>x"},   {0x403, "<Impossible!>"}, {-1, "<Impossible!>"},
    };
    for (const auto &row : rows) {
        CExEv_Token token;
        token.setString("x");
        token.kind = row.kind;
        std::string out = "replaced";
        token.dump(out);
        EXPECT_EQ(out, row.expected);
    }
}

} // namespace
