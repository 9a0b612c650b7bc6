#include "expression/variant.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <utility>

namespace variant {

namespace {

// A Real divisor nearer to zero than this counts as zero; the limit itself divides.
constexpr double kSmallestDivisor = 1e-12;

// A shift count is taken modulo the width of a value.
constexpr std::uint32_t kShiftMask = 31;

bool isInteger(const Variant &value)
{
    return value.getType() == Variant::kInt || value.getType() == Variant::kDWord;
}

bool isNumber(const Variant &value)
{
    return isInteger(value) || value.getType() == Variant::kBool || value.getType() == Variant::kReal;
}

bool either(const Variant &left, const Variant &right, Variant::Type type)
{
    return left.getType() == type || right.getType() == type;
}

bool both(const Variant &left, const Variant &right, Variant::Type type)
{
    return left.getType() == type && right.getType() == type;
}

std::uint32_t wordOf(const Variant &number)
{
    unsigned long word = 0;
    number.asDWORD(word);
    return static_cast<std::uint32_t>(word);
}

std::int32_t signedOf(std::uint32_t word)
{
    return static_cast<std::int32_t>(word);
}

double realOf(const Variant &number)
{
    double real = 0.0;
    number.asReal(real);
    return real;
}

std::uint32_t storedBits(const Variant &boolean)
{
    return static_cast<std::uint32_t>(boolean.getBool());
}

// Int arithmetic is done on the unsigned words, so that it wraps; the bits are the same.
void setInteger(Variant &result, bool isSigned, std::uint32_t word)
{
    if (isSigned)
        result.setInt(signedOf(word));
    else
        result.setDWORD(word);
}

/// Applies \a operation in the widest of the operand types: Real before DWORD before Int.
template <typename Operation>
int applyPromoted(const Variant &left, const Variant &right, Variant &result, Operation operation)
{
    if (!isNumber(left) || !isNumber(right))
        return 0;
    if (either(left, right, Variant::kReal))
        result.setReal(operation(realOf(left), realOf(right)));
    else
        setInteger(result, !either(left, right, Variant::kDWord), operation(wordOf(left), wordOf(right)));
    return 1;
}

/// A sum or difference. Two Bools count with the numbers that they hold, beside any other type true is 1.
template <typename Operation>
int applySum(const Variant &left, const Variant &right, Variant &result, Operation operation)
{
    if (!both(left, right, Variant::kBool))
        return applyPromoted(left, right, result, operation);
    result.setInt(signedOf(operation(storedBits(left), storedBits(right))));
    return 1;
}

/// Shifts: \a operation gets the left operand's word, the masked count, and whether the word is signed.
template <typename Operation>
int applyShift(const Variant &left, const Variant &right, Variant &result, Operation operation)
{
    if (!isInteger(left) || !isInteger(right))
        return 0;
    const bool isSigned = left.getType() == Variant::kInt;
    setInteger(result, isSigned, operation(wordOf(left), wordOf(right) & kShiftMask, isSigned));
    return 1;
}

template <typename Operation>
int applyBits(const Variant &left, const Variant &right, Variant &result, Operation operation)
{
    if (!isInteger(left) || !isInteger(right))
        return 0;
    setInteger(result, both(left, right, Variant::kInt), operation(wordOf(left), wordOf(right)));
    return 1;
}

template <typename Operation>
int applyLogic(const Variant &left, const Variant &right, Variant &result, Operation operation)
{
    int leftTruth = 0;
    int rightTruth = 0;
    if (!left.asBool(leftTruth) || !right.asBool(rightTruth))
        return 0;
    result.setBool(operation(leftTruth != 0, rightTruth != 0) ? 1 : 0);
    return 1;
}

/// Compares, and asks \a relation how the order of the operands stands to 0.
template <typename Relation>
int applyRelation(const Variant &left, const Variant &right, Variant &result, Relation relation)
{
    int order = 0;
    if (!Variant::compare(left, right, order))
        return 0;
    result.setBool(relation(order, 0) ? 1 : 0);
    return 1;
}

// A divisor of -1 gets its own way: the quotient of the lowest Int by it has no 32-bit result and wraps instead.
std::uint32_t signedQuotient(std::uint32_t dividend, std::uint32_t divisor)
{
    if (signedOf(divisor) == -1)
        return 0u - dividend;
    return static_cast<std::uint32_t>(signedOf(dividend) / signedOf(divisor));
}

std::uint32_t signedRemainder(std::uint32_t dividend, std::uint32_t divisor)
{
    if (signedOf(divisor) == -1)
        return 0;
    return static_cast<std::uint32_t>(signedOf(dividend) % signedOf(divisor));
}

bool isZeroDivisor(const Variant &divisor)
{
    if (divisor.getType() == Variant::kReal)
        return divisor.getReal() > -kSmallestDivisor && divisor.getReal() < kSmallestDivisor;
    return wordOf(divisor) == 0;
}

template <typename Number>
int orderOf(Number left, Number right)
{
    return static_cast<int>(left > right) - static_cast<int>(left < right);
}

int compareTexts(const Variant &left, const Variant &right, int &out)
{
    if (!both(left, right, Variant::kString))
        return 0;
    const char *const leftText = left.getString();
    const char *const rightText = right.getString();
    out = std::strcmp(leftText ? leftText : "", rightText ? rightText : "");
    return 1;
}

int compareReals(const Variant &left, const Variant &right, int &out)
{
    double leftReal = 0.0;
    double rightReal = 0.0;
    if (!left.asReal(leftReal) || !right.asReal(rightReal))
        return 0;
    out = orderOf(leftReal, rightReal);
    return 1;
}

int compareSigned(const Variant &left, const Variant &right, int &out)
{
    int leftNumber = 0;
    int rightNumber = 0;
    if (!left.asInt(leftNumber) || !right.asInt(rightNumber))
        return 0;
    // Two Ints are told apart by their wrapped difference, so numbers more than 31 bits apart come out reversed.
    if (both(left, right, Variant::kInt))
        out = signedOf(wordOf(left) - wordOf(right));
    else
        out = orderOf(leftNumber, rightNumber);
    return 1;
}

int compareUnsigned(const Variant &left, const Variant &right, int &out)
{
    unsigned long leftWord = 0;
    unsigned long rightWord = 0;
    if (!left.asDWORD(leftWord) || !right.asDWORD(rightWord))
        return 0;
    // An Int below zero is less than any DWORD, though its bits would make a large one.
    if (left.getInt() < 0 || right.getInt() < 0)
        out = left.getInt() < 0 ? -1 : 1;
    else
        out = orderOf(leftWord, rightWord);
    return 1;
}

/// Extends \a out by printf of one number, of any length.
template <typename Number>
void appendFormatted(std::string &out, const char *format, Number number)
{
    char text[64];
    const int length = std::snprintf(text, sizeof text, format, number);
    if (length <= 0)
        return;
    const std::size_t count = static_cast<std::size_t>(length);
    if (count < sizeof text) {
        out.append(text, count);
        return;
    }
    const std::size_t start = out.size();
    out.resize(start + count + 1); // printf ends what it writes with a NUL, which is cut off again
    std::snprintf(out.data() + start, count + 1, format, number);
    out.resize(start + count);
}

/// The text of "%.4lf", with a decimal point under every locale of the host.
void appendReal(std::string &out, double number)
{
    // The largest double has 309 digits before the point; a sign, the point and 4 decimals come to them.
    char text[std::numeric_limits<double>::max_exponent10 + 16];
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, 4);
    out.append(text, end.ptr);
}

std::int32_t sizeOfText(const std::string &text)
{
    constexpr std::size_t kLongest = std::numeric_limits<std::int32_t>::max() - 1;
    return static_cast<std::int32_t>(std::min(text.size(), kLongest)) + 1;
}

} // namespace

const char *const Variant::m_cTypeChar = "0BIDRSXP";

Variant::Variant() = default;

Variant::Variant(Variant &&other) noexcept
{
    *this = std::move(other);
}

Variant::~Variant() = default;

Variant &Variant::operator=(Variant &&other) noexcept
{
    if (this == &other)
        return *this;
    m_type = other.m_type;
    m_size = other.m_size;
    m_data = other.m_data;
    m_bytes = std::move(other.m_bytes);
    other.setNull();
    return *this;
}

void Variant::free()
{
    if (m_type != kString && m_type != kBinary)
        return;
    std::string().swap(m_bytes); // clear() would keep the memory
    m_size = 0;
}

void Variant::become(Type type, std::int32_t size)
{
    free();
    m_type = type;
    m_size = size;
}

void Variant::setNull()
{
    become(kNull, 0);
}

void Variant::setBool(int value)
{
    become(kBool, 4);
    m_data.number = value;
}

void Variant::setInt(int value)
{
    become(kInt, 4);
    m_data.number = value;
}

void Variant::setDWORD(unsigned long value)
{
    become(kDWord, 4);
    m_data.word = static_cast<std::uint32_t>(value);
}

void Variant::setReal(double value)
{
    become(kReal, 8);
    m_data.real = value;
}

void Variant::setPtr(void *value)
{
    become(kPtr, 4);
    m_data.pointer = value;
}

void Variant::setString(const char *text)
{
    if (text)
        setString(std::string(text));
    else
        become(kString, 0);
}

void Variant::setString(std::string &&text)
{
    text.resize(std::strlen(text.c_str()));
    become(kString, sizeOfText(text));
    m_bytes = std::move(text);
}

void Variant::setBinary(const void *bytes, int size)
{
    const int count = bytes ? std::max(size, 0) : 0;
    // Copied before the old payload goes, for it may be the source.
    std::string copy;
    if (count > 0)
        copy.assign(static_cast<const char *>(bytes), static_cast<std::size_t>(count));
    become(kBinary, count);
    m_bytes = std::move(copy);
}

int Variant::getBool() const
{
    return m_type == kBool ? m_data.number : 0;
}

int Variant::getInt() const
{
    return m_type == kInt ? m_data.number : 0;
}

unsigned long Variant::getDWORD() const
{
    return m_type == kDWord ? m_data.word : 0;
}

double Variant::getReal() const
{
    return m_type == kReal ? m_data.real : 0.0;
}

const char *Variant::getString() const
{
    return m_type == kString && m_size > 0 ? m_bytes.c_str() : nullptr;
}

const void *Variant::getBinary() const
{
    return m_type == kBinary && m_size > 0 ? m_bytes.data() : nullptr;
}

void *Variant::getPtr() const
{
    return m_type == kPtr ? m_data.pointer : nullptr;
}

int Variant::getData(void *destination, int maximum) const
{
    if (m_type == kNull || m_type == kString || m_type == kBinary || !destination)
        return 0;
    const int count = std::clamp(maximum, 0, static_cast<int>(m_size));
    std::memcpy(destination, &m_data, static_cast<std::size_t>(count));
    return count;
}

int Variant::asInt(int &out) const
{
    constexpr int kLowest = std::numeric_limits<std::int32_t>::min();
    switch (m_type) {
    case kBool:
        out = m_data.number != 0 ? 1 : 0;
        return 1;
    case kInt:
        out = m_data.number;
        return 1;
    case kDWord:
        out = signedOf(m_data.word);
        return 1;
    case kReal: {
        const double floor = std::floor(m_data.real);
        const bool fits = floor >= kLowest && floor <= std::numeric_limits<std::int32_t>::max();
        out = fits ? static_cast<int>(floor) : kLowest;
        return 1;
    }
    case kNull:
    case kString:
    case kBinary:
    case kPtr:
        break;
    }
    return 0;
}

int Variant::asDWORD(unsigned long &out) const
{
    switch (m_type) {
    case kBool:
        out = m_data.number != 0 ? 1 : 0;
        return 1;
    case kInt:
        out = static_cast<std::uint32_t>(m_data.number);
        return 1;
    case kDWord:
        out = m_data.word;
        return 1;
    case kReal: {
        constexpr double kLimit = 9223372036854775808.0; // the first double that 64 signed bits do not hold
        const double floor = std::floor(m_data.real);
        const bool fits = floor >= -kLimit && floor < kLimit;
        out = static_cast<std::uint32_t>(fits ? static_cast<std::int64_t>(floor) : 0);
        return 1;
    }
    case kNull:
    case kString:
    case kBinary:
    case kPtr:
        break;
    }
    return 0;
}

int Variant::asReal(double &out) const
{
    switch (m_type) {
    case kBool:
        out = m_data.number != 0 ? 1.0 : 0.0;
        return 1;
    case kInt:
        out = m_data.number;
        return 1;
    case kDWord:
        out = m_data.word;
        return 1;
    case kReal:
        out = m_data.real;
        return 1;
    case kNull:
    case kString:
    case kBinary:
    case kPtr:
        break;
    }
    return 0;
}

int Variant::asBool(int &out) const
{
    double real = 0.0;
    if (!asReal(real)) // holds every 32-bit integer exactly
        return 0;
    out = real == 0.0 ? 0 : 1;
    return 1;
}

int Variant::asString(std::string &out, const char *format) const
{
    std::string text; // apart from out, which may hold the format
    switch (m_type) {
    case kNull:
        break;
    case kBool:
        text = m_data.number != 0 ? "1" : "0";
        break;
    case kInt:
        appendFormatted(text, format ? format : "%d", static_cast<int>(m_data.number));
        break;
    case kDWord:
        appendFormatted(text, format ? format : "%lu", static_cast<unsigned long>(m_data.word));
        break;
    case kReal:
        if (format)
            appendFormatted(text, format, m_data.real);
        else
            appendReal(text, m_data.real);
        break;
    case kString:
        out = m_bytes; // straight into memory that the caller may have reserved
        return 1;
    case kBinary:
        for (const char byte : m_bytes)
            appendFormatted(text, format ? format : "%02X", static_cast<unsigned>(static_cast<unsigned char>(byte)));
        break;
    case kPtr:
        appendFormatted(text, "%p", m_data.pointer);
        break;
    }
    out = std::move(text);
    return 1;
}

void Variant::appendToString(const char *text)
{
    if (!text)
        return;
    if (m_type == kString) {
        m_bytes += text; // in place, and right even for this value's own text
        m_size = sizeOfText(m_bytes);
        return;
    }
    std::string whole;
    asString(whole);
    whole += text;
    setString(std::move(whole));
}

void Variant::appendToString(int character)
{
    const char text[] = {static_cast<char>(static_cast<unsigned char>(character)), '\0'};
    if (character != 0)
        appendToString(text);
}

int Variant::MUL(const Variant &left, const Variant &right, Variant &result)
{
    // False wipes out even a factor that is infinite or not a number, and leaves no sign on the zero.
    const auto isFalse = [](const Variant &value) { return value.getType() == kBool && value.getBool() == 0; };
    if (either(left, right, kReal) && (isFalse(left) || isFalse(right))) {
        result.setReal(0.0);
        return 1;
    }
    return applyPromoted(left, right, result, std::multiplies<>());
}

int Variant::DIV(const Variant &left, const Variant &right, Variant &result)
{
    if (!isNumber(left) || !isNumber(right) || right.getType() == kBool || isZeroDivisor(right))
        return 0;
    const bool isFalse = left.getType() == kBool && left.getBool() == 0;
    if (isFalse)
        result.setReal(0.0);
    else if (left.getType() == kBool || either(left, right, kReal))
        result.setReal(realOf(left) / realOf(right));
    else if (left.getType() == kInt)
        result.setInt(signedOf(signedQuotient(wordOf(left), wordOf(right))));
    else
        result.setDWORD(wordOf(left) / wordOf(right));
    return 1;
}

int Variant::MOD(const Variant &left, const Variant &right, Variant &result)
{
    if (!isInteger(left) || !isInteger(right) || isZeroDivisor(right))
        return 0;
    if (left.getType() == kInt)
        result.setInt(signedOf(signedRemainder(wordOf(left), wordOf(right))));
    else
        result.setDWORD(wordOf(left) % wordOf(right));
    return 1;
}

int Variant::ADD(const Variant &left, const Variant &right, Variant &result)
{
    return applySum(left, right, result, std::plus<>());
}

int Variant::SUB(const Variant &left, const Variant &right, Variant &result)
{
    return applySum(left, right, result, std::minus<>());
}

int Variant::BITLEFT(const Variant &left, const Variant &right, Variant &result)
{
    return applyShift(left, right, result, [](std::uint32_t word, std::uint32_t count, bool) { return word << count; });
}

int Variant::BITRIGHT(const Variant &left, const Variant &right, Variant &result)
{
    return applyShift(left, right, result, [](std::uint32_t word, std::uint32_t count, bool isSigned) {
        return isSigned ? static_cast<std::uint32_t>(signedOf(word) >> count) : word >> count;
    });
}

int Variant::LT(const Variant &left, const Variant &right, Variant &result)
{
    return applyRelation(left, right, result, std::less<>());
}

int Variant::GT(const Variant &left, const Variant &right, Variant &result)
{
    return applyRelation(left, right, result, std::greater<>());
}

int Variant::LE(const Variant &left, const Variant &right, Variant &result)
{
    return applyRelation(left, right, result, std::less_equal<>());
}

int Variant::GE(const Variant &left, const Variant &right, Variant &result)
{
    return applyRelation(left, right, result, std::greater_equal<>());
}

int Variant::EQ(const Variant &left, const Variant &right, Variant &result)
{
    return applyRelation(left, right, result, std::equal_to<>());
}

int Variant::NE(const Variant &left, const Variant &right, Variant &result)
{
    return applyRelation(left, right, result, std::not_equal_to<>());
}

int Variant::BITAND(const Variant &left, const Variant &right, Variant &result)
{
    return applyBits(left, right, result, std::bit_and<>());
}

int Variant::BITXOR(const Variant &left, const Variant &right, Variant &result)
{
    return applyBits(left, right, result, std::bit_xor<>());
}

int Variant::BITOR(const Variant &left, const Variant &right, Variant &result)
{
    return applyBits(left, right, result, std::bit_or<>());
}

int Variant::LOGAND(const Variant &left, const Variant &right, Variant &result)
{
    return applyLogic(left, right, result, std::logical_and<>());
}

int Variant::LOGOR(const Variant &left, const Variant &right, Variant &result)
{
    return applyLogic(left, right, result, std::logical_or<>());
}

int Variant::compare(const Variant &left, const Variant &right, int &out)
{
    if (either(left, right, kString))
        return compareTexts(left, right, out);
    if (either(left, right, kReal))
        return compareReals(left, right, out);
    // A Bool on the left reads even a DWORD as signed; on the right it takes over the kind of the left operand.
    const bool isUnsigned = left.getType() == kDWord || (left.getType() == kInt && right.getType() == kDWord);
    return isUnsigned ? compareUnsigned(left, right, out) : compareSigned(left, right, out);
}

} // namespace variant
