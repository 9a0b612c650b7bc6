#include "check/c_expression.h"

#include "text/literal_scan.h"
#include "text/names.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <limits>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

using Status = CValue::Status;

/// A number with its type: of 32 or 64 bits, with or without sign. What is beyond its type has wrapped.
struct Number {
    qint64 value = 0;
    bool isUnsigned = false;
    bool isWide = false;

    int bits() const { return isWide ? 64 : 32; }
    quint64 word() const { return static_cast<quint64>(value); }
};

/// \a word as a number of that type.
Number fitted(quint64 word, bool isUnsigned, bool isWide)
{
    if (isWide)
        return {static_cast<qint64>(word), isUnsigned, true};
    const auto low = static_cast<quint32>(word);
    return {isUnsigned ? static_cast<qint64>(low) : static_cast<qint64>(static_cast<qint32>(low)), isUnsigned, false};
}

/// The operators of two operands; a higher level binds tighter.
struct Operator {
    QLatin1StringView symbol;
    int level;
};
constexpr Operator kOperators[] = {
    {"<<"_L1, 8}, {">>"_L1, 8}, {"<="_L1, 7}, {">="_L1, 7}, {"=="_L1, 6}, {"!="_L1, 6},
    {"&&"_L1, 2}, {"||"_L1, 1}, {"*"_L1, 10}, {"/"_L1, 10}, {"%"_L1, 10}, {"+"_L1, 9},
    {"-"_L1, 9},  {"<"_L1, 7},  {">"_L1, 7},  {"&"_L1, 5},  {"^"_L1, 4},  {"|"_L1, 3},
};

class Reader {
public:
    Reader(QStringView text, const CNames &names, CArithmetic arithmetic)
        : m_rest(text), m_names(names), m_isWidest(arithmetic == CArithmetic::Widest)
    {
    }

    CValue read()
    {
        const Number number = readBinary(1);
        skipBlanks();
        if (m_status == Status::Value && !m_rest.isEmpty())
            m_status = Status::Unreadable;
        return {m_status, number.isUnsigned, number.value};
    }

private:
    static constexpr int kDeepest = 100;

    Number fail(Status status)
    {
        if (m_status == Status::Value)
            m_status = status;
        m_rest = {};
        return {};
    }

    void skipBlanks()
    {
        while (!m_rest.isEmpty() && m_rest.front().isSpace())
            m_rest = m_rest.sliced(1);
    }

    const Operator *nextOperator()
    {
        skipBlanks();
        const auto found =
            std::ranges::find_if(kOperators, [&](const Operator &row) { return m_rest.startsWith(row.symbol); });
        return found == std::end(kOperators) ? nullptr : found;
    }

    Number readBinary(int lowestLevel)
    {
        Number left = readUnary();
        for (const Operator *next = nextOperator(); next && next->level >= lowestLevel; next = nextOperator()) {
            m_rest = m_rest.sliced(next->symbol.size());
            const Number right = readBinary(next->level + 1);
            left = apply(next->symbol, left, right);
        }
        return left;
    }

    Number readUnary()
    {
        if (++m_depth > kDeepest)
            return fail(Status::Unreadable);
        const Number number = readOperand();
        --m_depth;
        return number;
    }

    Number readOperand()
    {
        skipBlanks();
        if (m_rest.isEmpty())
            return fail(Status::Unreadable);
        const QChar first = m_rest.front();
        if (first >= u'0' && first <= u'9')
            return readLiteral();
        if (isNameCharacter(first))
            return readName();
        m_rest = m_rest.sliced(1);
        if (first == u'(') {
            const Number number = readBinary(1);
            skipBlanks();
            if (!m_rest.startsWith(u')'))
                return fail(Status::Unreadable);
            m_rest = m_rest.sliced(1);
            return number;
        }
        if (!QStringView(u"+-~!").contains(first))
            return fail(Status::Unreadable);
        const Number operand = readUnary();
        switch (first.unicode()) {
        case u'-':
            return fitted(0 - operand.word(), operand.isUnsigned, operand.isWide);
        case u'~':
            return fitted(~operand.word(), operand.isUnsigned, operand.isWide);
        case u'!':
            return truth(operand.value == 0);
        default:
            return operand;
        }
    }

    Number truth(bool value) const { return {value ? 1 : 0, false, m_isWidest}; }

    QStringView takeName()
    {
        const auto end = std::ranges::find_if_not(m_rest, isNameCharacter);
        const QStringView name = m_rest.first(end - m_rest.begin());
        m_rest = m_rest.sliced(name.size());
        return name;
    }

    Number readName()
    {
        const std::optional<qint32> value = m_names(takeName());
        skipBlanks();
        // A name of ours may go on with a point, and a call is not for C.
        if (!value || m_rest.startsWith(u'(') || m_rest.startsWith(u'.') || m_rest.startsWith(u':') ||
            m_rest.startsWith(u'?'))
            return fail(Status::Unreadable);
        return {*value, false, m_isWidest};
    }

    Number readLiteral()
    {
        const QStringView literal = takeName();
        if (m_rest.startsWith(u'.'))
            return fail(Status::Unreadable);
        const bool isHexadecimal = literal.startsWith("0x"_L1, Qt::CaseInsensitive);
        const bool isBinary = literal.startsWith("0b"_L1, Qt::CaseInsensitive);
        const bool isOctal = !isHexadecimal && !isBinary && literal.size() > 1 && literal.startsWith(u'0');
        const QStringView digits = literal.sliced(isHexadecimal || isBinary ? 2 : isOctal ? 1 : 0);
        const quint64 base = isHexadecimal ? 16 : isBinary ? 2 : isOctal ? 8 : 10;
        if (digits.isEmpty() || !std::ranges::all_of(digits, isHexDigit))
            return fail(Status::Unreadable);
        quint64 value = 0;
        for (const QChar c : digits) {
            const char16_t folded = c.unicode() | 0x20;
            const quint64 digit = c.isDigit() ? c.unicode() - u'0' : 10u + folded - u'a';
            if (digit >= base)
                return fail(isOctal && digit < 10 ? Status::NoNumber : Status::Unreadable);
            if (value > (std::numeric_limits<quint64>::max() - digit) / base)
                return fail(Status::Unreadable);
            value = value * base + digit;
        }
        // A decimal number goes to the next wider type with a sign, any other first to the one without.
        const bool isDecimal = base == 10;
        const bool isWide = m_isWidest || value > (isDecimal ? 0x7FFFFFFFu : 0xFFFFFFFFu);
        const bool isUnsigned = isWide ? value > 0x7FFFFFFFFFFFFFFFu : value > 0x7FFFFFFFu;
        return fitted(value, isUnsigned, isWide);
    }

    Number apply(QLatin1StringView symbol, Number left, Number right)
    {
        if (m_status != Status::Value)
            return {};
        if (symbol == "&&"_L1)
            return truth(left.value != 0 && right.value != 0);
        if (symbol == "||"_L1)
            return truth(left.value != 0 || right.value != 0);
        if (symbol == "<<"_L1 || symbol == ">>"_L1)
            return shifted(left, right, symbol == "<<"_L1);
        const bool isWide = left.isWide || right.isWide;
        const bool isUnsigned =
            (left.isUnsigned && left.isWide == isWide) || (right.isUnsigned && right.isWide == isWide);
        left = fitted(left.word(), isUnsigned, isWide);
        right = fitted(right.word(), isUnsigned, isWide);
        const auto compared = [&](auto compare) {
            return truth(isUnsigned ? compare(left.word(), right.word()) : compare(left.value, right.value));
        };
        switch (symbol.front().toLatin1()) {
        case '<':
            return symbol.size() == 1 ? compared(std::less()) : compared(std::less_equal());
        case '>':
            return symbol.size() == 1 ? compared(std::greater()) : compared(std::greater_equal());
        case '=':
            return truth(left.value == right.value);
        case '!':
            return truth(left.value != right.value);
        case '+':
            return fitted(left.word() + right.word(), isUnsigned, isWide);
        case '-':
            return fitted(left.word() - right.word(), isUnsigned, isWide);
        case '*':
            return fitted(left.word() * right.word(), isUnsigned, isWide);
        case '&':
            return fitted(left.word() & right.word(), isUnsigned, isWide);
        case '|':
            return fitted(left.word() | right.word(), isUnsigned, isWide);
        case '^':
            return fitted(left.word() ^ right.word(), isUnsigned, isWide);
        default:
            return divided(left, right, symbol == "%"_L1);
        }
    }

    /// Both are of one type.
    Number divided(Number left, Number right, bool isRemainder)
    {
        if (right.value == 0)
            return fail(Status::Undefined);
        if (!left.isUnsigned && right.value == -1) // the least number divided by it overflows
            return isRemainder ? Number{0, false, left.isWide} : fitted(0 - left.word(), false, left.isWide);
        const quint64 word =
            left.isUnsigned ? (isRemainder ? left.word() % right.word() : left.word() / right.word())
                            : static_cast<quint64>(isRemainder ? left.value % right.value : left.value / right.value);
        return fitted(word, left.isUnsigned, left.isWide);
    }

    Number shifted(Number left, Number right, bool isLeft)
    {
        if (right.word() >= static_cast<quint64>(left.bits()))
            return fail(Status::Undefined);
        const int count = static_cast<int>(right.value);
        const quint64 word = isLeft            ? left.word() << count
                             : left.isUnsigned ? left.word() >> count
                                               : static_cast<quint64>(left.value >> count);
        return fitted(word, left.isUnsigned, left.isWide);
    }

    QStringView m_rest;
    const CNames &m_names;
    const bool m_isWidest;
    int m_depth = 0;
    Status m_status = Status::Value;
};

} // namespace

QString CValue::text() const
{
    switch (status) {
    case Status::Value:
        return isUnsigned ? QString::number(static_cast<quint64>(value)) : QString::number(value);
    case Status::Undefined:
        return u"undefined"_s;
    case Status::NoNumber:
        return u"no number"_s;
    case Status::Unreadable:
        break;
    }
    return u"not known"_s;
}

CValue evaluateInC(QStringView expression, const CNames &names, CArithmetic arithmetic)
{
    return Reader(expression, names, arithmetic).read();
}

} // namespace veldmap
