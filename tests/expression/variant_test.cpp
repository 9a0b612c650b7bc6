#include "values.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

using namespace std::string_literals;
using variant::Variant;

namespace {

constexpr int kLowestInt = std::numeric_limits<int>::min();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

Variant bytes(const void *content, int size)
{
    Variant value;
    value.setBinary(content, size);
    return value;
}

using Operation = int (*)(const Variant &, const Variant &, Variant &);
const std::map<std::string, Operation> kOperations = {
    {"*", Variant::MUL},     {"/", Variant::DIV},      {"%", Variant::MOD},       {"+", Variant::ADD},
    {"-", Variant::SUB},     {"<<", Variant::BITLEFT}, {">>", Variant::BITRIGHT}, {"<", Variant::LT},
    {">", Variant::GT},      {"<=", Variant::LE},      {">=", Variant::GE},       {"==", Variant::EQ},
    {"!=", Variant::NE},     {"&", Variant::BITAND},   {"^", Variant::BITXOR},    {"|", Variant::BITOR},
    {"&&", Variant::LOGAND}, {"||", Variant::LOGOR},
};

std::string outcome(const std::string &operation, const Variant &left, const Variant &right)
{
    return written([&](Variant &result) { return kOperations.at(operation)(left, right, result); });
}

/// Each row is "left operator right = outcome".
void expectOutcomes(const std::string &table)
{
    for (const auto &[asked, expected] : rowsOf(table)) {
        const std::vector<std::string> words = wordsOf(asked);
        EXPECT_EQ(outcome(words.at(1), valueOf(words.at(0)), valueOf(words.at(2))), expected) << asked;

        // The result may take the place of an operand.
        Variant inPlace = valueOf(words.at(0));
        if (kOperations.at(words.at(1))(inPlace, valueOf(words.at(2)), inPlace)) {
            EXPECT_EQ(shown(inPlace), expected) << asked << ", in place";
        }
    }
}

/// The type letter of each outcome for one left operand, '-' for a failure.
std::string resultTypes(const std::string &operation, const std::string &left)
{
    std::string types;
    for (const char *right : {"0", "B1", "I3", "D3", "R2", "S3", "X3", "P"}) {
        const std::string result = outcome(operation, valueOf(left), valueOf(right));
        types += result == "fails" ? '-' : result.front();
    }
    return types;
}

TEST(VariantStorage, GettersNeverConvert)
{
    EXPECT_EQ(valueOf("B7").getBool(), 7); // kept as it was set
    Variant wide;
    wide.setDWORD(~0ul);
    EXPECT_EQ(wide.getDWORD(), 0xFFFFFFFFul);
    EXPECT_EQ(valueOf("D5").getInt(), 0);
    const Variant five = valueOf("I5");
    EXPECT_TRUE(five.getDWORD() == 0 && five.getBool() == 0 && five.getReal() == 0.0);
    EXPECT_TRUE(five.getString() == nullptr && five.getPtr() == nullptr);
    EXPECT_EQ(valueOf("R5").getInt(), 0);
    EXPECT_EQ(valueOf("S5").getBinary(), nullptr);
    EXPECT_EQ(valueOf("X5").getString(), nullptr);
}

TEST(VariantStorage, TextAndBytesThatAreNotThereAreNull)
{
    EXPECT_EQ(valueOf("s").getString(), nullptr);
    EXPECT_STREQ(valueOf("S").getString(), "");
    EXPECT_EQ(bytes("ab", -1).getBinary(), nullptr);
    EXPECT_EQ(bytes("ab", -1).getSize(), 0);
    EXPECT_EQ(bytes(nullptr, 2).getSize(), 0);
}

TEST(VariantStorage, DataIsCopiedAsFarAsThereIsRoom)
{
    unsigned char bytes[5] = {9, 9, 9, 9, 9};
    EXPECT_EQ(valueOf("D4294967295").getData(bytes, 3), 3);
    EXPECT_EQ(bytes[2] + bytes[3], 255 + 9);
    EXPECT_EQ(valueOf("I0").getData(bytes, 5), 4);
    EXPECT_EQ(bytes[3] + bytes[4], 0 + 9);
    EXPECT_EQ(valueOf("Sabc").getData(bytes, 5) + valueOf("0").getData(bytes, 5) + valueOf("I1").getData(bytes, -1), 0);
}

TEST(VariantStorage, CopiesAreDeepAndMovesLeaveNull)
{
    const std::string longText(1000, 'x');
    Variant original = valueOf("S" + longText);
    Variant copy(original);
    Variant assigned;
    assigned = original;
    original.setInt(1);
    EXPECT_EQ(copy.getString(), longText);
    EXPECT_EQ(assigned.getString(), longText);

    const Variant moved = std::move(copy);
    EXPECT_EQ(moved.getString(), longText);
    EXPECT_EQ(copy.getType(), Variant::kNull); // NOLINT: a value that was moved from is Null
    EXPECT_EQ(copy.getSize(), 0);
}

TEST(VariantStorage, AValueMayBeSetFromItsOwnPayload)
{
    for (const std::string &content : {std::string("short"), std::string(1000, 'y')}) {
        Variant value = valueOf("S" + content);
        const Variant &itself = value;
        value = itself;
        value.setString(value.getString());
        EXPECT_EQ(value.getString(), content);
        value.setString(value.getString() + 1);
        EXPECT_EQ(value.getString(), content.substr(1));
        value.appendToString(value.getString());
        EXPECT_EQ(value.getString(), content.substr(1) + content.substr(1));

        Variant binary = valueOf("X" + content);
        binary.setBinary(static_cast<const char *>(binary.getBinary()) + 1, 3);
        EXPECT_EQ(std::memcmp(binary.getBinary(), content.data() + 1, 3), 0);
    }
}

TEST(VariantReading, ConvertsNumbersByFloorAndKeepsBits)
{
    const struct {
        const char *value;
        int asInt;
        unsigned long asDWORD;
        double asReal;
        int asBool;
    } rows[] = {
        {"B7", 1, 1, 1.0, 1},
        {"B0", 0, 0, 0.0, 0},
        {"I-1", -1, 4294967295ul, -1.0, 1},
        {"D4294967295", -1, 4294967295ul, 4294967295.0, 1},
        {"D0", 0, 0, 0.0, 0},
        {"R-0.5", -1, 4294967295ul, -0.5, 1},
        {"R-1.5", -2, 4294967294ul, -1.5, 1},
        {"R-0", 0, 0, -0.0, 0},
        {"R2147483647.5", 2147483647, 2147483647ul, 2147483647.5, 1},
        {"R2147483648", kLowestInt, 2147483648ul, 2147483648.0, 1},
        {"R-2147483648.5", kLowestInt, 2147483647ul, -2147483648.5, 1},
        {"R4294967298", kLowestInt, 2, 4294967298.0, 1},
        {"R9223372036854775808", kLowestInt, 0, 9223372036854775808.0, 1},
        {"R-inf", kLowestInt, 0, -kInfinity, 1},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.value);
        const Variant value = valueOf(row.value);
        int number = 0;
        unsigned long word = 0;
        double floating = 0.0;
        int truth = 0;
        EXPECT_TRUE(value.asInt(number) == 1 && value.asDWORD(word) == 1);
        EXPECT_TRUE(value.asReal(floating) == 1 && value.asBool(truth) == 1);
        EXPECT_EQ(number, row.asInt);
        EXPECT_EQ(word, row.asDWORD);
        EXPECT_EQ(floating, row.asReal);
        EXPECT_EQ(truth, row.asBool);
    }
}

TEST(VariantReading, NotANumberIsTrueAndHasTheLowestInt)
{
    int number = 0;
    unsigned long word = 1;
    int truth = 0;
    const Variant value = valueOf("Rnan");
    EXPECT_TRUE(value.asInt(number) && value.asDWORD(word) && value.asBool(truth));
    EXPECT_TRUE(number == kLowestInt && word == 0 && truth == 1);
}

TEST(VariantReading, RefusesWhatIsNoNumberAndWritesNothing)
{
    for (const char *text : {"0", "S1", "X1", "P"}) {
        const Variant value = valueOf(text);
        int number = 42;
        unsigned long word = 42;
        double floating = 42.0;
        EXPECT_EQ(value.asInt(number), 0);
        EXPECT_EQ(value.asBool(number), 0);
        EXPECT_EQ(value.asDWORD(word), 0);
        EXPECT_EQ(value.asReal(floating), 0);
        EXPECT_TRUE(number == 42 && word == 42 && floating == 42.0) << value.getTypeChar();
    }
}

TEST(VariantText, FormatsEachType)
{
    int target = 0;
    char address[64];
    std::snprintf(address, sizeof address, "%p", static_cast<void *>(&target));
    Variant pointing;
    pointing.setPtr(&target);
    std::string out;
    EXPECT_EQ(pointing.asString(out, "%d"), 1);
    EXPECT_EQ(out, address);
    const struct {
        const char *value;
        const char *format;
        std::string expected;
    } rows[] = {
        {"0", "%d", ""},
        {"B7", "%d", "1"},
        {"B0", nullptr, "0"},
        {"I-2147483648", nullptr, "-2147483648"},
        {"I10", "0x%08X", "0x0000000A"},
        {"D4294967295", nullptr, "4294967295"},
        {"D255", "%lX", "FF"},
        {"R1.5", nullptr, "1.5000"},
        {"R-inf", nullptr, "-inf"},
        {"R1.5", "%g", "1.5"},
        {"I1", "%200d", std::string(199, ' ') + "1"},
        {"Sa%d", "%d", "a%d"},
        {"s", nullptr, ""},
        {"X\x0A\xFF", nullptr, "0AFF"},
        {"X\x0A\xFF", "%u,", "10,255,"},
    };
    for (const auto &row : rows) {
        out = "replaced";
        EXPECT_EQ(valueOf(row.value).asString(out, row.format), 1);
        EXPECT_EQ(out, row.expected) << row.value;
    }
}

TEST(VariantText, AppendingMakesAnyValueAString)
{
    Variant value = valueOf("R1.5");
    value.appendToString("x");
    value.appendToString('y');
    value.appendToString(0x100 + 'z'); // the low 8 bits
    EXPECT_EQ(shown(value), "S1.5000xyz");
    EXPECT_EQ(value.getSize(), 10);

    Variant number = valueOf("I1");
    number.appendToString(static_cast<const char *>(nullptr));
    number.appendToString(0);
    EXPECT_EQ(shown(number), "I1");
    number.appendToString("");
    EXPECT_EQ(shown(number), "S1");

    Variant absent = valueOf("s");
    absent.appendToString("");
    EXPECT_STREQ(absent.getString(), "");
}

TEST(VariantArithmetic, ResultTypesFollowTheOperandTypes)
{
    // Right operands: Null, Bool, Int, DWORD, Real, String, Binary, Ptr.
    const struct {
        const char *operation;
        const char *ofBool, *ofInt, *ofDWORD, *ofReal;
    } rows[] = {
        {"*", "-IIDR---", "-IIDR---", "-DDDR---", "-RRRR---"},  {"+", "-IIDR---", "-IIDR---", "-DDDR---", "-RRRR---"},
        {"-", "-IIDR---", "-IIDR---", "-DDDR---", "-RRRR---"},  {"/", "--RRR---", "--IIR---", "--DDR---", "--RRR---"},
        {"%", "--------", "--II----", "--DD----", "--------"},  {"<<", "--------", "--II----", "--DD----", "--------"},
        {">>", "--------", "--II----", "--DD----", "--------"}, {"&", "--------", "--ID----", "--DD----", "--------"},
        {"^", "--------", "--ID----", "--DD----", "--------"},  {"|", "--------", "--ID----", "--DD----", "--------"},
        {"&&", "-BBBB---", "-BBBB---", "-BBBB---", "-BBBB---"}, {"||", "-BBBB---", "-BBBB---", "-BBBB---", "-BBBB---"},
        {"==", "-BBBB---", "-BBBB---", "-BBBB---", "-BBBB---"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.operation);
        EXPECT_EQ(resultTypes(row.operation, "B1"), row.ofBool);
        EXPECT_EQ(resultTypes(row.operation, "I7"), row.ofInt);
        EXPECT_EQ(resultTypes(row.operation, "D7"), row.ofDWORD);
        EXPECT_EQ(resultTypes(row.operation, "R7"), row.ofReal);
        for (const char *left : {"0", "X7", "P"})
            EXPECT_EQ(resultTypes(row.operation, left), "--------") << left;
        EXPECT_EQ(resultTypes(row.operation, "S7"), row.operation == "=="s ? "-----B--" : "--------");
    }
}

TEST(VariantArithmetic, SumsAndProductsWrapAt32Bits)
{
    expectOutcomes(R"(
        I2147483647 + I1 = I-2147483648      D0 - I1 = D4294967295
        I-1 + D0 = D4294967295               I65536 * I65536 = I0
        I-2147483648 * I-1 = I-2147483648    D4294967295 * D4294967295 = D1
        I-1 + R0.5 = R-0.5                   D4294967295 + R0.5 = R4294967295.5)");
}

TEST(VariantArithmetic, BoolsCountAsOneExceptAmongThemselves)
{
    expectOutcomes(R"(
        B5 + B2 = I7                      B5 - B2 = I3                      B2147483647 + B1 = I-2147483648
        B5 * B2 = I1                      B5 * B0 = I0                      B5 + I2 = I3
        D0 - B5 = D4294967295             B5 + R0.5 = R1.5                  B5 * R-2.5 = R-2.5
        B0 * Rinf = R0                    Rnan * B0 = R0                    R-1 * B0 = R0)");
}

TEST(VariantArithmetic, DivisionFollowsTheLeftType)
{
    expectOutcomes(R"(
        I7 / I2 = I3                        I-7 / I2 = I-3
        I10 / D4294967295 = I-10            D4294967295 / I-2 = D1
        I-2147483648 / I-1 = I-2147483648   I7 / R2 = R3.5
        B5 / I4 = R0.25                     B0 / I4 = R0
        B0 / R-4 = R0                       B0 / I0 = fails
        I4 / B1 = fails                     R4 / D0 = fails
        I1 / R1e-13 = fails                 I1 / R-9.9e-13 = fails
        I1 / R1e-12 = R1000000000000        I1 / R-1e-12 = R-1000000000000
        I-7 % I2 = I-1                      I7 % I-2 = I1
        I7 % D4294967294 = I1               D7 % I-2 = D7
        I-2147483648 % I-1 = I0             I-2147483648 % D4294967295 = I0
        I7 % I0 = fails                     D7 % D0 = fails)");
}

TEST(VariantArithmetic, ShiftsUseFiveBitsOfTheCount)
{
    expectOutcomes(R"(
        I-1 >> I1 = I-1                   D4294967295 >> I1 = D2147483647   I-8 >> D2 = I-2
        I1 << I33 = I2                    I1 << I31 = I-2147483648          I-1 << I-1 = I-2147483648
        D3 << D31 = D2147483648)");
}

TEST(VariantComparison, OrdersEachPairOfTypes)
{
    Rows rows = rowsOf(R"(
        I-2147483648 I1 = 1   I3 I3 = 0             I-1 D0 = -1           D0 I-1 = 1
        I5 D4294967295 = -1   D4294967295 I5 = 1    D4294967295 D1 = 1    D4294967295 B1 = 1
        B5 I1 = 0             B5 B1 = 0             R1.5 I1 = 1           B1 R1 = 0
        D4294967295 R-1 = 1   Rnan I1 = 0           Rnan Rnan = 0         Sa Sb = -1
        s S = 0               Sa s = 1
        I2147483647 I-1 = -1 // the difference wraps
        B1 D4294967295 = 1 // read as -1
        I-2147483648 B1 = -1 // no difference, so nothing wraps)");
    rows.emplace_back("S\xC3 Sa", "1");
    for (const auto &[pair, sign] : rows) {
        SCOPED_TRACE(pair);
        const Variant left = valueOf(wordsOf(pair).at(0));
        const Variant right = valueOf(wordsOf(pair).at(1));
        const int expectedSign = std::stoi(sign);
        int order = 99;
        EXPECT_EQ(Variant::compare(left, right, order), 1);
        EXPECT_EQ((order > 0) - (order < 0), expectedSign);
        const std::string isLess = expectedSign < 0 ? "B1" : "B0";
        const std::string isGreater = expectedSign > 0 ? "B1" : "B0";
        const std::string isEqual = expectedSign == 0 ? "B1" : "B0";
        const auto negated = [](const std::string &truth) { return truth == "B1" ? "B0" : "B1"; };
        EXPECT_EQ(outcome("<", left, right), isLess);
        EXPECT_EQ(outcome(">", left, right), isGreater);
        EXPECT_EQ(outcome("<=", left, right), negated(isGreater));
        EXPECT_EQ(outcome(">=", left, right), negated(isLess));
        EXPECT_EQ(outcome("==", left, right), isEqual);
        EXPECT_EQ(outcome("!=", left, right), negated(isEqual));
    }
}

TEST(VariantComparison, RefusesOtherPairsAndWritesNothing)
{
    const std::pair<const char *, const char *> pairs[] = {
        {"S1", "I1"}, {"I1", "S1"}, {"R1", "S1"}, {"0", "0"},   {"0", "I1"},
        {"D1", "0"},  {"I1", "X"},  {"R1", "0"},  {"Xa", "Xa"}, {"P", "P"},
    };
    for (const auto &[left, right] : pairs) {
        int order = 99;
        EXPECT_EQ(Variant::compare(valueOf(left), valueOf(right), order), 0) << left << ", " << right;
        EXPECT_EQ(order, 99);
        EXPECT_EQ(outcome("!=", valueOf(left), valueOf(right)), "fails");
    }
}

} // namespace
