#include "expression/variant.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

using variant::Variant;

namespace {

constexpr int kLowestInt = std::numeric_limits<int>::min();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

template <typename Setter, typename... Arguments>
Variant make(Setter setter, Arguments... arguments)
{
    Variant value;
    (value.*setter)(arguments...);
    return value;
}

Variant null()
{
    return Variant();
}
Variant boolean(int value)
{
    return make(&Variant::setBool, value);
}
Variant integer(int value)
{
    return make(&Variant::setInt, value);
}
Variant dword(unsigned long value)
{
    return make(&Variant::setDWORD, value);
}
Variant real(double value)
{
    return make(&Variant::setReal, value);
}
Variant text(const char *value)
{
    Variant result;
    result.setString(value);
    return result;
}
Variant bytes(const char *value)
{
    return make(&Variant::setBinary, value, static_cast<int>(std::strlen(value)));
}
Variant pointer(void *value)
{
    return make(&Variant::setPtr, value);
}

/// The type letter and the value, as in "I-1"; reals with all their digits.
std::string shown(const Variant &value)
{
    std::string digits;
    value.asString(digits, value.getType() == Variant::kReal ? "%.17g" : nullptr);
    return value.getTypeChar() + digits;
}

using Operation = int (*)(const Variant &, const Variant &, Variant &);

/// What an operation gives, or "fails". A failure must leave the result alone and a success must return 1.
std::string outcome(Operation operation, const Variant &left, const Variant &right)
{
    Variant result = text("untouched");
    const int success = operation(left, right, result);
    if (success == 0)
        return shown(result) == "Suntouched" ? "fails" : "fails and writes " + shown(result);
    return success == 1 ? shown(result) : "returns " + std::to_string(success);
}

struct OperationRow {
    Operation operation;
    Variant left;
    Variant right;
    const char *expected;
};

void expectOutcomes(const std::vector<OperationRow> &rows)
{
    for (const OperationRow &row : rows) {
        const std::size_t index = static_cast<std::size_t>(&row - rows.data());
        SCOPED_TRACE("row " + std::to_string(index) + ": " + shown(row.left) + ", " + shown(row.right));
        EXPECT_EQ(outcome(row.operation, row.left, row.right), row.expected);

        // The result may take the place of an operand.
        Variant inPlace = row.left;
        if (row.operation(inPlace, row.right, inPlace)) {
            EXPECT_EQ(shown(inPlace), row.expected);
        }
    }
}

/// The type letter of each outcome for one left operand, '-' for a failure.
std::string resultTypes(Operation operation, const Variant &left)
{
    const Variant rights[] = {null(),    boolean(1), integer(3), dword(3),
                              real(2.0), text("3"),  bytes("3"), pointer(nullptr)};
    std::string types;
    for (const Variant &right : rights) {
        const std::string result = outcome(operation, left, right);
        types += result == "fails" ? '-' : result.front();
    }
    return types;
}

TEST(VariantStorage, GettersNeverConvert)
{
    EXPECT_EQ(boolean(7).getBool(), 7); // kept as it was set
    EXPECT_EQ(dword(~0ul).getDWORD(), 0xFFFFFFFFul);
    EXPECT_EQ(dword(5).getInt(), 0);
    EXPECT_EQ(integer(5).getDWORD(), 0ul);
    EXPECT_EQ(integer(5).getBool(), 0);
    EXPECT_EQ(integer(5).getReal(), 0.0);
    EXPECT_EQ(real(5.0).getInt(), 0);
    EXPECT_EQ(integer(5).getString(), nullptr);
    EXPECT_EQ(text("5").getBinary(), nullptr);
    EXPECT_EQ(bytes("5").getString(), nullptr);
    EXPECT_EQ(integer(5).getPtr(), nullptr);
}

TEST(VariantStorage, TextAndBytesThatAreNotThereAreNull)
{
    EXPECT_EQ(text(nullptr).getString(), nullptr);
    EXPECT_STREQ(text("").getString(), "");
    EXPECT_EQ(make(&Variant::setBinary, "ab", -1).getBinary(), nullptr);
    EXPECT_EQ(make(&Variant::setBinary, "ab", -1).getSize(), 0);
    EXPECT_EQ(make(&Variant::setBinary, nullptr, 2).getSize(), 0);
}

TEST(VariantStorage, CopiesAreDeepAndMovesLeaveNull)
{
    const std::string longText(1000, 'x');
    Variant original = text(longText.c_str());
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
        Variant value = text(content.c_str());
        const Variant &itself = value;
        value = itself;
        value.setString(value.getString());
        EXPECT_EQ(value.getString(), content);
        value.setString(value.getString() + 1);
        EXPECT_EQ(value.getString(), content.substr(1));
        value.appendToString(value.getString());
        EXPECT_EQ(value.getString(), content.substr(1) + content.substr(1));

        Variant binary = bytes(content.c_str());
        binary.setBinary(static_cast<const char *>(binary.getBinary()) + 1, 3);
        EXPECT_EQ(std::memcmp(binary.getBinary(), content.data() + 1, 3), 0);
    }
}

TEST(VariantReading, ConvertsNumbersByFloorAndKeepsBits)
{
    const struct {
        Variant value;
        int asInt;
        unsigned long asDWORD;
        double asReal;
        int asBool;
    } rows[] = {
        {boolean(7), 1, 1, 1.0, 1},
        {boolean(0), 0, 0, 0.0, 0},
        {integer(-1), -1, 4294967295ul, -1.0, 1},
        {dword(4294967295ul), -1, 4294967295ul, 4294967295.0, 1},
        {dword(0), 0, 0, 0.0, 0},
        {real(-0.5), -1, 4294967295ul, -0.5, 1},
        {real(-1.5), -2, 4294967294ul, -1.5, 1},
        {real(-0.0), 0, 0, -0.0, 0},
        {real(2147483647.5), 2147483647, 2147483647ul, 2147483647.5, 1},
        {real(2147483648.0), kLowestInt, 2147483648ul, 2147483648.0, 1},
        {real(-2147483648.5), kLowestInt, 2147483647ul, -2147483648.5, 1},
        {real(4294967298.0), kLowestInt, 2, 4294967298.0, 1},
        {real(9223372036854775808.0), kLowestInt, 0, 9223372036854775808.0, 1},
        {real(-kInfinity), kLowestInt, 0, -kInfinity, 1},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(shown(row.value));
        int number = 0;
        unsigned long word = 0;
        double floating = 0.0;
        int truth = 0;
        EXPECT_EQ(row.value.asInt(number), 1);
        EXPECT_EQ(row.value.asDWORD(word), 1);
        EXPECT_EQ(row.value.asReal(floating), 1);
        EXPECT_EQ(row.value.asBool(truth), 1);
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
    EXPECT_TRUE(real(kNaN).asInt(number) && real(kNaN).asDWORD(word) && real(kNaN).asBool(truth));
    EXPECT_EQ(number, kLowestInt);
    EXPECT_EQ(word, 0ul);
    EXPECT_EQ(truth, 1);
}

TEST(VariantReading, RefusesWhatIsNoNumberAndWritesNothing)
{
    for (const Variant &value : {null(), text("1"), bytes("1"), pointer(nullptr)}) {
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
    const struct {
        Variant value;
        const char *format;
        std::string expected;
    } rows[] = {
        {null(), "%d", ""},
        {boolean(7), "%d", "1"},
        {boolean(0), nullptr, "0"},
        {integer(kLowestInt), nullptr, "-2147483648"},
        {integer(10), "0x%08X", "0x0000000A"},
        {dword(4294967295ul), nullptr, "4294967295"},
        {dword(255), "%lX", "FF"},
        {real(1.5), nullptr, "1.5000"},
        {real(-kInfinity), nullptr, "-inf"},
        {real(1.5), "%g", "1.5"},
        {integer(1), "%200d", std::string(199, ' ') + "1"},
        {text("a%d"), "%d", "a%d"},
        {text(nullptr), nullptr, ""},
        {bytes("\x0A\xFF"), nullptr, "0AFF"},
        {bytes("\x0A\xFF"), "%u,", "10,255,"},
        {pointer(&target), "%d", address},
    };
    for (const auto &row : rows) {
        std::string out = "replaced";
        EXPECT_EQ(row.value.asString(out, row.format), 1);
        EXPECT_EQ(out, row.expected) << row.value.getTypeChar();
    }
}

TEST(VariantText, AppendingMakesAnyValueAString)
{
    Variant value = real(1.5);
    value.appendToString("x");
    value.appendToString('y');
    value.appendToString(0x100 + 'z'); // the low 8 bits
    EXPECT_EQ(shown(value), "S1.5000xyz");
    EXPECT_EQ(value.getSize(), 10);

    Variant number = integer(1);
    number.appendToString(static_cast<const char *>(nullptr));
    number.appendToString(0);
    EXPECT_EQ(shown(number), "I1");
    number.appendToString("");
    EXPECT_EQ(shown(number), "S1");

    Variant absent = text(nullptr);
    absent.appendToString("");
    EXPECT_STREQ(absent.getString(), "");
}

TEST(VariantArithmetic, ResultTypesFollowTheOperandTypes)
{
    // Right operands: Null, Bool, Int, DWORD, Real, String, Binary, Ptr.
    const struct {
        Operation operation;
        const char *name;
        const char *ofBool, *ofInt, *ofDWORD, *ofReal;
    } rows[] = {
        {Variant::MUL, "MUL", "-IIDR---", "-IIDR---", "-DDDR---", "-RRRR---"},
        {Variant::ADD, "ADD", "-IIDR---", "-IIDR---", "-DDDR---", "-RRRR---"},
        {Variant::SUB, "SUB", "-IIDR---", "-IIDR---", "-DDDR---", "-RRRR---"},
        {Variant::DIV, "DIV", "--RRR---", "--IIR---", "--DDR---", "--RRR---"},
        {Variant::MOD, "MOD", "--------", "--II----", "--DD----", "--------"},
        {Variant::BITLEFT, "BITLEFT", "--------", "--II----", "--DD----", "--------"},
        {Variant::BITRIGHT, "BITRIGHT", "--------", "--II----", "--DD----", "--------"},
        {Variant::BITAND, "BITAND", "--------", "--ID----", "--DD----", "--------"},
        {Variant::BITXOR, "BITXOR", "--------", "--ID----", "--DD----", "--------"},
        {Variant::BITOR, "BITOR", "--------", "--ID----", "--DD----", "--------"},
        {Variant::LOGAND, "LOGAND", "-BBBB---", "-BBBB---", "-BBBB---", "-BBBB---"},
        {Variant::LOGOR, "LOGOR", "-BBBB---", "-BBBB---", "-BBBB---", "-BBBB---"},
        {Variant::EQ, "EQ", "-BBBB---", "-BBBB---", "-BBBB---", "-BBBB---"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(resultTypes(row.operation, boolean(1)), row.ofBool);
        EXPECT_EQ(resultTypes(row.operation, integer(7)), row.ofInt);
        EXPECT_EQ(resultTypes(row.operation, dword(7)), row.ofDWORD);
        EXPECT_EQ(resultTypes(row.operation, real(7.0)), row.ofReal);
        for (const Variant &left : {null(), bytes("7"), pointer(nullptr)})
            EXPECT_EQ(resultTypes(row.operation, left), "--------") << left.getTypeChar();
        EXPECT_EQ(resultTypes(row.operation, text("7")), row.operation == Variant::EQ ? "-----B--" : "--------");
    }
}

TEST(VariantArithmetic, SumsAndProductsWrapAt32Bits)
{
    expectOutcomes({
        {Variant::ADD, integer(2147483647), integer(1), "I-2147483648"},
        {Variant::SUB, dword(0), integer(1), "D4294967295"},
        {Variant::ADD, integer(-1), dword(0), "D4294967295"},
        {Variant::MUL, integer(65536), integer(65536), "I0"},
        {Variant::MUL, integer(-2147483647 - 1), integer(-1), "I-2147483648"},
        {Variant::MUL, dword(4294967295ul), dword(4294967295ul), "D1"},
        {Variant::ADD, integer(-1), real(0.5), "R-0.5"},
        {Variant::ADD, dword(4294967295ul), real(0.5), "R4294967295.5"},
    });
}

TEST(VariantArithmetic, BoolsCountAsOneExceptAmongThemselves)
{
    expectOutcomes({
        {Variant::ADD, boolean(5), boolean(2), "I7"},
        {Variant::SUB, boolean(5), boolean(2), "I3"},
        {Variant::ADD, boolean(2147483647), boolean(1), "I-2147483648"},
        {Variant::MUL, boolean(5), boolean(2), "I1"},
        {Variant::MUL, boolean(5), boolean(0), "I0"},
        {Variant::ADD, boolean(5), integer(2), "I3"},
        {Variant::SUB, dword(0), boolean(5), "D4294967295"},
        {Variant::ADD, boolean(5), real(0.5), "R1.5"},
        {Variant::MUL, boolean(5), real(-2.5), "R-2.5"},
        {Variant::MUL, boolean(0), real(kInfinity), "R0"},
        {Variant::MUL, real(kNaN), boolean(0), "R0"},
        {Variant::MUL, real(-1.0), boolean(0), "R0"},
    });
}

TEST(VariantArithmetic, DivisionFollowsTheLeftType)
{
    expectOutcomes({
        {Variant::DIV, integer(7), integer(2), "I3"},
        {Variant::DIV, integer(-7), integer(2), "I-3"},
        {Variant::DIV, integer(10), dword(4294967295ul), "I-10"},
        {Variant::DIV, dword(4294967295ul), integer(-2), "D1"},
        {Variant::DIV, integer(kLowestInt), integer(-1), "I-2147483648"},
        {Variant::DIV, integer(7), real(2.0), "R3.5"},
        {Variant::DIV, boolean(5), integer(4), "R0.25"},
        {Variant::DIV, boolean(0), integer(4), "R0"},
        {Variant::DIV, boolean(0), real(-4.0), "R0"},
        {Variant::DIV, boolean(0), integer(0), "fails"},
        {Variant::DIV, integer(4), boolean(1), "fails"},
        {Variant::DIV, real(4.0), dword(0), "fails"},
        {Variant::DIV, integer(1), real(1e-13), "fails"},
        {Variant::DIV, integer(1), real(-9.9e-13), "fails"},
        {Variant::DIV, integer(1), real(1e-12), "R1000000000000"},
        {Variant::DIV, integer(1), real(-1e-12), "R-1000000000000"},
        {Variant::MOD, integer(-7), integer(2), "I-1"},
        {Variant::MOD, integer(7), integer(-2), "I1"},
        {Variant::MOD, integer(7), dword(4294967294ul), "I1"},
        {Variant::MOD, dword(7), integer(-2), "D7"},
        {Variant::MOD, integer(kLowestInt), integer(-1), "I0"},
        {Variant::MOD, integer(kLowestInt), dword(4294967295ul), "I0"},
        {Variant::MOD, integer(7), integer(0), "fails"},
        {Variant::MOD, dword(7), dword(0), "fails"},
    });
}

TEST(VariantArithmetic, ShiftsUseFiveBitsOfTheCount)
{
    expectOutcomes({
        {Variant::BITRIGHT, integer(-1), integer(1), "I-1"},
        {Variant::BITRIGHT, dword(4294967295ul), integer(1), "D2147483647"},
        {Variant::BITRIGHT, integer(-8), dword(2), "I-2"},
        {Variant::BITLEFT, integer(1), integer(33), "I2"},
        {Variant::BITLEFT, integer(1), integer(31), "I-2147483648"},
        {Variant::BITLEFT, integer(-1), integer(-1), "I-2147483648"},
        {Variant::BITLEFT, dword(3), dword(31), "D2147483648"},
    });
}

TEST(VariantComparison, OrdersEachPairOfTypes)
{
    const struct {
        Variant left;
        Variant right;
        int sign;
    } rows[] = {
        {integer(2147483647), integer(-1), -1}, // the difference wraps
        {integer(kLowestInt), integer(1), 1},
        {integer(3), integer(3), 0},
        {integer(-1), dword(0), -1},
        {dword(0), integer(-1), 1},
        {integer(5), dword(4294967295ul), -1},
        {dword(4294967295ul), integer(5), 1},
        {dword(4294967295ul), dword(1), 1},
        {dword(4294967295ul), boolean(1), 1},
        {boolean(1), dword(4294967295ul), 1}, // read as -1
        {boolean(5), integer(1), 0},
        {boolean(5), boolean(1), 0},
        {integer(kLowestInt), boolean(1), -1}, // no difference, so nothing wraps
        {real(1.5), integer(1), 1},
        {boolean(1), real(1.0), 0},
        {dword(4294967295ul), real(-1.0), 1},
        {real(kNaN), integer(1), 0},
        {real(kNaN), real(kNaN), 0},
        {text("a"), text("b"), -1},
        {text("\xC3"), text("a"), 1},
        {text(nullptr), text(""), 0},
        {text("a"), text(nullptr), 1},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(shown(row.left) + ", " + shown(row.right));
        int order = 99;
        EXPECT_EQ(Variant::compare(row.left, row.right, order), 1);
        EXPECT_EQ((order > 0) - (order < 0), row.sign);
        EXPECT_EQ(outcome(Variant::LT, row.left, row.right), row.sign < 0 ? "B1" : "B0");
        EXPECT_EQ(outcome(Variant::GT, row.left, row.right), row.sign > 0 ? "B1" : "B0");
        EXPECT_EQ(outcome(Variant::LE, row.left, row.right), row.sign <= 0 ? "B1" : "B0");
        EXPECT_EQ(outcome(Variant::GE, row.left, row.right), row.sign >= 0 ? "B1" : "B0");
        EXPECT_EQ(outcome(Variant::EQ, row.left, row.right), row.sign == 0 ? "B1" : "B0");
        EXPECT_EQ(outcome(Variant::NE, row.left, row.right), row.sign != 0 ? "B1" : "B0");
    }
}

TEST(VariantComparison, RefusesOtherPairsAndWritesNothing)
{
    const std::pair<Variant, Variant> pairs[] = {
        {text("1"), integer(1)},  {integer(1), text("1")},
        {real(1.0), text("1")},   {null(), null()},
        {null(), integer(1)},     {dword(1), null()},
        {integer(1), bytes("")},  {real(1.0), null()},
        {bytes("a"), bytes("a")}, {pointer(nullptr), pointer(nullptr)},
    };
    for (const auto &[left, right] : pairs) {
        int order = 99;
        EXPECT_EQ(Variant::compare(left, right, order), 0) << shown(left) << ", " << shown(right);
        EXPECT_EQ(order, 99);
        EXPECT_EQ(outcome(Variant::NE, left, right), "fails");
    }
}

} // namespace
