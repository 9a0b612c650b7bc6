#include "expression/evaluation_context.h"

#include "expression/variant.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <string>
#include <vector>

using cexev::CExEvCtx;
using variant::Variant;

namespace {

/// The value that a text such as "I-1", "D7", "B1", "R1.5", "Sabc" or "0" shows: the type letter, then the value.
Variant valueOf(const std::string &shown)
{
    Variant value;
    const std::string digits = shown.substr(1);
    switch (shown.front()) {
    case 'B':
        value.setBool(std::stoi(digits));
        break;
    case 'I':
        value.setInt(std::stoi(digits));
        break;
    case 'D':
        value.setDWORD(std::stoul(digits));
        break;
    case 'R':
        value.setReal(std::stod(digits));
        break;
    case 'S':
        value.setString(digits.c_str());
        break;
    case 'X':
        value.setBinary(digits.data(), static_cast<int>(digits.size()));
        break;
    case 'P':
        value.setPtr(nullptr);
        break;
    default:
        break;
    }
    return value;
}

std::string shown(const Variant &value)
{
    std::string digits;
    value.asString(digits, value.getType() == Variant::kReal ? "%.10g" : nullptr);
    return value.getTypeChar() + digits;
}

/// The values of a call and the pointers to them.
class Arguments {
public:
    explicit Arguments(const std::vector<std::string> &texts) : m_values(texts.size()), m_pointers(texts.size())
    {
        for (std::size_t index = 0; index < texts.size(); ++index) {
            m_values[index] = valueOf(texts[index]);
            m_pointers[index] = &m_values[index];
        }
    }

    int count() const { return static_cast<int>(m_values.size()); }
    Variant **data() { return m_pointers.data(); }

private:
    std::vector<Variant> m_values;
    std::vector<Variant *> m_pointers;
};

using Call = int (CExEvCtx::*)(const char *, int, Variant **, Variant &);

/// What a call gives, or "fails"; a failed call must leave a Null result.
std::string outcome(Call call, const char *name, const std::vector<std::string> &arguments)
{
    Arguments values(arguments);
    CExEvCtx context;
    Variant result = valueOf("Sstale");
    if ((context.*call)(name, values.count(), values.data(), result))
        return shown(result);
    return shown(result) == "0" ? "fails" : "fails and leaves " + shown(result);
}

TEST(ContextOperators, RowIsChosenByArgumentsAndOrder)
{
    const struct {
        const char *name;
        std::vector<std::string> arguments;
        const char *expected;
    } rows[] = {
        {"+", {"B5"}, "B1"}, // a Bool stays one
        {"+", {"Sa"}, "fails"},       {"+", {"I1", "Sx"}, "S1x"},         {"+", {"R1.5", "Sx"}, "S1.5000x"},
        {"+", {"Sx", "I1"}, "Sx1"},   {"+", {"Sx", "Sy"}, "Sxy"},         {"+", {"0", "Sx"}, "Sx"},
        {"+", {"Sx", "X\n"}, "Sx0A"}, {"+", {"I1", "I2"}, "I3"},          {"+", {"X1", "I2"}, "fails"},
        {"+", {}, "fails"},           {"+", {"I1", "I2", "I3"}, "fails"}, {"-", {"Sx", "I1"}, "fails"},
        {"*", {"I1"}, "fails"},       {"!", {"I1", "I2"}, "fails"},       {"=", {"I1", "I2"}, "fails"},
        {"sin", {"I0"}, "fails"}, // a function is no operator
    };
    for (const auto &row : rows)
        EXPECT_EQ(outcome(&CExEvCtx::callOperator, row.name, row.arguments), row.expected)
            << row.name << " with " << row.arguments.size() << " arguments";
}

TEST(ContextOperators, UnaryOperatorsFollowTheType)
{
    const char *const operands[] = {"B5",   "B0",   "I5", "I-2147483648", "D1", "D0", "R0",
                                    "R1.5", "Rnan", "0",  "Sa",           "Xa", "P"};
    const struct {
        const char *name;
        std::vector<std::string> expected;
    } rows[] = {
        {"+", {"B1", "B0", "I5", "I-2147483648", "D1", "D0", "R0", "R1.5", "Rnan", "fails", "fails", "fails", "fails"}},
        {"-",
         {"I-5", "I0", "I-5", "I-2147483648", "D4294967295", "D0", "R-0", "R-1.5", "R-nan", "fails", "fails", "fails",
          "fails"}},
        {"~",
         {"fails", "fails", "I-6", "I2147483647", "D4294967294", "D4294967295", "fails", "fails", "fails", "fails",
          "fails", "fails", "fails"}},
        {"!", {"B0", "B1", "B0", "B0", "B0", "B1", "B1", "B0", "B0", "fails", "fails", "fails", "fails"}},
    };
    for (const auto &row : rows) {
        for (std::size_t index = 0; index < std::size(operands); ++index)
            EXPECT_EQ(outcome(&CExEvCtx::callOperator, row.name, {operands[index]}), row.expected[index])
                << row.name << operands[index];
    }
}

TEST(ContextFunctions, SinTakesOneNumber)
{
    EXPECT_EQ(outcome(&CExEvCtx::callFunction, "sin", {"I0"}), "R0");
    EXPECT_EQ(outcome(&CExEvCtx::callFunction, "sin", {"R0.5"}), "R0.4794255386");
    EXPECT_EQ(outcome(&CExEvCtx::callFunction, "sin", {"B7"}), "R0.8414709848");
    EXPECT_EQ(outcome(&CExEvCtx::callFunction, "sin", {"Sa"}), "fails");
    EXPECT_EQ(outcome(&CExEvCtx::callFunction, "sin", {}), "fails");
    EXPECT_EQ(outcome(&CExEvCtx::callFunction, "sin", {"I0", "I0"}), "fails");
    EXPECT_EQ(outcome(&CExEvCtx::callFunction, "Sin", {"I0"}), "fails");
    EXPECT_EQ(outcome(&CExEvCtx::callFunction, "+", {"I0"}), "fails");
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
    const struct {
        const char *name;
        std::vector<std::string> arguments;
        const char *expected;
    } rows[] = {
        {"f", {"I1", "Sa"}, "I1"},
        {"f", {"I1", "I1"}, "I2"},
        {"f", {"D1", "Sa"}, "fails"},
        {"f", {"I1"}, "fails"},
        {"F", {"I1", "Sa"}, "fails"},
        {"g", {"I1", "I1"}, "fails"}, // a handler's refusal is not passed on to a later row
        {"g", {"D1", "I1"}, "I3"},
        {"h", {"I1", "Sa", "X"}, "I4"},
        {"h", {"I1"}, "I6"}, // the '*' of the first row asks for one argument at least
        {"h", {}, "I5"},
        {"h", {"Sa", "Sa"}, "I6"},
        {"n", {"0"}, "I7"},
        {"n", {"B0"}, "fails"},
        {"e", {}, "fails"},
    };
    for (const auto &row : rows) {
        Arguments values(row.arguments);
        CExEvCtx context;
        Variant result = valueOf("Sstale");
        const int success = context.doCallFunction(table, row.name, values.count(), values.data(), result);
        EXPECT_EQ(success ? shown(result) : "fails", row.expected) << row.name << values.count();
        EXPECT_NE(shown(result), "Sstale");
    }
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
