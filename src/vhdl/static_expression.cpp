#include "vhdl/static_expression.h"

#include "text/literal_scan.h"
#include "text/literals.h"
#include "text/names.h"

#include <QSet>
#include <QtNumeric>

#include <algorithm>
#include <iterator>
#include <limits>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr int kNesting = 256; // parentheses inside one another

bool isInteger(qint64 value)
{
    return value >= std::numeric_limits<qint32>::min() && value <= std::numeric_limits<qint32>::max();
}

/// Reads an expression from left to right:
///
///     expression = [sign] term {(+ | -) term}
///     term = factor {(* | /) factor}
///     factor = primary [** primary]
///     primary = literal | name | ( expression )
///
/// So 2*-1 and 2**3**4 are none. Every step must be an integer of 32 bits, also between literals alone: 2**31-1 is too
/// large. A literal itself may lie beyond, as in -2147483648.
class Reader {
public:
    Reader(QStringView text, const ConstantLookup &constants) : m_rest(text), m_constants(constants) {}

    StaticResult read(qint64 *value)
    {
        const qint64 number = expression();
        skipBlanks();
        if (!m_isReadable || !m_rest.isEmpty())
            return StaticResult::Unreadable;
        if (value)
            *value = number;
        return m_isTooLarge || !isInteger(number) ? StaticResult::TooLarge : StaticResult::Value;
    }

private:
    using Operation = bool (*)(qint64 left, qint64 right, qint64 *result);

    qint64 expression()
    {
        const bool isNegative = take("-"_L1);
        if (!isNegative)
            take("+"_L1);
        qint64 number = term();
        if (isNegative)
            number = combine(0, number, qSubOverflow<qint64>);
        while (m_isReadable) {
            if (take("+"_L1))
                number = combine(number, term(), qAddOverflow<qint64>);
            else if (take("-"_L1))
                number = combine(number, term(), qSubOverflow<qint64>);
            else
                break;
        }
        return number;
    }

    qint64 term()
    {
        qint64 number = factor();
        while (m_isReadable) {
            if (take("*"_L1)) {
                number = combine(number, factor(), qMulOverflow<qint64>);
            } else if (take("/"_L1)) {
                const qint64 divisor = factor();
                if (divisor == 0)
                    return fail();
                number = combine(number / divisor, 0, qAddOverflow<qint64>);
            } else {
                break;
            }
        }
        return number;
    }

    qint64 factor()
    {
        const qint64 base = primary();
        if (!take("**"_L1))
            return base;
        const qint64 exponent = primary();
        if (exponent < 0)
            return fail();
        // Every base beyond -1 to 1 has left the numbers long before.
        qint64 power = 1;
        for (qint64 step = 0; step < qMin<qint64>(exponent, 64 + (exponent & 1)) && !m_isTooLarge; ++step)
            power = combine(power, base, qMulOverflow<qint64>);
        return power;
    }

    qint64 primary()
    {
        if (take("("_L1)) {
            if (++m_depth > kNesting)
                return fail();
            const qint64 number = expression();
            --m_depth;
            return take(")"_L1) ? number : fail();
        }
        skipBlanks();
        qsizetype length = 0;
        while (length < m_rest.size() && (isNameCharacter(m_rest[length]) || m_rest[length] == u'#'))
            ++length;
        const QStringView word = m_rest.first(length);
        m_rest = m_rest.sliced(length);
        if (word.isEmpty())
            return fail();
        return word.front().isDigit() ? literal(word) : named(word);
    }

    qint64 named(QStringView word)
    {
        const std::optional<qint64> value = m_constants(word.toString().toUpper());
        return value ? *value : fail();
    }

    qint64 literal(QStringView word)
    {
        const bool isHexadecimal = word.size() > 4 && word.startsWith("16#"_L1) && word.endsWith(u'#');
        if (isHexadecimal)
            return digits(word.sliced(3).chopped(1), 16, isHexDigit);
        const auto isDecimal = [](QChar c) { return c >= u'0' && c <= u'9'; };
        const qsizetype exponentAt = word.indexOf(u'E', 0, Qt::CaseInsensitive);
        if (exponentAt < 0)
            return digits(word, 10, isDecimal);
        qint64 number = digits(word.first(exponentAt), 10, isDecimal);
        const qint64 exponent = digits(word.sliced(exponentAt + 1), 10, isDecimal);
        for (qint64 step = 0; step < exponent && m_isReadable && !m_isTooLarge && number != 0; ++step)
            m_isTooLarge = qMulOverflow(number, qint64(10), &number);
        return number;
    }

    qint64 digits(QStringView text, int base, bool (*isDigit)(QChar))
    {
        if (text.isEmpty() || !std::ranges::all_of(text, isDigit))
            return fail();
        bool isSmall = false;
        const qint64 value = text.toLongLong(&isSmall, base);
        m_isTooLarge = m_isTooLarge || !isSmall;
        return value;
    }

    qint64 combine(qint64 left, qint64 right, Operation operation)
    {
        qint64 result = 0;
        m_isTooLarge = operation(left, right, &result) || !isInteger(result) || m_isTooLarge;
        return m_isTooLarge ? 0 : result;
    }

    /// Takes \a symbol if it stands next. "*" does not take the first half of "**".
    bool take(QLatin1StringView symbol)
    {
        skipBlanks();
        const bool isThere = m_rest.startsWith(symbol) && !(symbol == "*"_L1 && m_rest.startsWith("**"_L1)) &&
                             !(symbol == "-"_L1 && m_rest.startsWith("--"_L1)); // a comment
        if (isThere)
            m_rest = m_rest.sliced(symbol.size());
        return isThere;
    }

    void skipBlanks()
    {
        while (!m_rest.isEmpty() && m_rest.front().isSpace())
            m_rest = m_rest.sliced(1);
    }

    qint64 fail()
    {
        m_isReadable = false;
        return 0;
    }

    QStringView m_rest;
    const ConstantLookup &m_constants;
    int m_depth = 0;
    bool m_isReadable = true;
    bool m_isTooLarge = false;
};

constexpr QLatin1StringView kReservedWords[] = {
    // VHDL-93
    "abs"_L1, "access"_L1, "after"_L1, "alias"_L1, "all"_L1, "and"_L1, "architecture"_L1, "array"_L1, "assert"_L1,
    "attribute"_L1, "begin"_L1, "block"_L1, "body"_L1, "buffer"_L1, "bus"_L1, "case"_L1, "component"_L1,
    "configuration"_L1, "constant"_L1, "disconnect"_L1, "downto"_L1, "else"_L1, "elsif"_L1, "end"_L1, "entity"_L1,
    "exit"_L1, "file"_L1, "for"_L1, "function"_L1, "generate"_L1, "generic"_L1, "group"_L1, "guarded"_L1, "if"_L1,
    "impure"_L1, "in"_L1, "inertial"_L1, "inout"_L1, "is"_L1, "label"_L1, "library"_L1, "linkage"_L1, "literal"_L1,
    "loop"_L1, "map"_L1, "mod"_L1, "nand"_L1, "new"_L1, "next"_L1, "nor"_L1, "not"_L1, "null"_L1, "of"_L1, "on"_L1,
    "open"_L1, "or"_L1, "others"_L1, "out"_L1, "package"_L1, "port"_L1, "postponed"_L1, "procedure"_L1, "process"_L1,
    "pure"_L1, "range"_L1, "record"_L1, "register"_L1, "reject"_L1, "rem"_L1, "report"_L1, "return"_L1, "rol"_L1,
    "ror"_L1, "select"_L1, "severity"_L1, "shared"_L1, "signal"_L1, "sla"_L1, "sll"_L1, "sra"_L1, "srl"_L1,
    "subtype"_L1, "then"_L1, "to"_L1, "transport"_L1, "type"_L1, "unaffected"_L1, "units"_L1, "until"_L1, "use"_L1,
    "variable"_L1, "wait"_L1, "when"_L1, "while"_L1, "with"_L1, "xnor"_L1, "xor"_L1,
    // VHDL-2002 and VHDL-2008
    "assume"_L1, "assume_guarantee"_L1, "context"_L1, "cover"_L1, "default"_L1, "fairness"_L1, "force"_L1,
    "parameter"_L1, "property"_L1, "protected"_L1, "release"_L1, "restrict"_L1, "restrict_guarantee"_L1, "sequence"_L1,
    "strong"_L1, "vmode"_L1, "vprop"_L1, "vunit"_L1,
    // every line of a package uses it
    "integer"_L1};

/// Names of the packages that every package uses, and of libraries. A constant of that name in another package is
/// hidden by them, as they are by it.
constexpr QLatin1StringView kStandardNames[] = {
    "bit"_L1, "bit_vector"_L1, "boolean"_L1, "character"_L1, "delay_length"_L1, "error"_L1, "failure"_L1, "false"_L1,
    "file_open_kind"_L1, "file_open_status"_L1, "append_mode"_L1, "mode_error"_L1, "name_error"_L1, "open_ok"_L1,
    "read_mode"_L1, "status_error"_L1, "write_mode"_L1, "foreign"_L1, "integer"_L1, "natural"_L1, "note"_L1, "now"_L1,
    "positive"_L1, "real"_L1, "severity_level"_L1, "string"_L1, "time"_L1, "true"_L1, "warning"_L1,
    // units of time
    "fs"_L1, "ps"_L1, "ns"_L1, "us"_L1, "ms"_L1, "sec"_L1, "min"_L1, "hr"_L1,
    // characters
    "nul"_L1, "soh"_L1, "stx"_L1, "etx"_L1, "eot"_L1, "enq"_L1, "ack"_L1, "bel"_L1, "bs"_L1, "ht"_L1, "lf"_L1, "vt"_L1,
    "ff"_L1, "cr"_L1, "so"_L1, "si"_L1, "dle"_L1, "dc1"_L1, "dc2"_L1, "dc3"_L1, "dc4"_L1, "nak"_L1, "syn"_L1, "etb"_L1,
    "can"_L1, "em"_L1, "sub"_L1, "esc"_L1, "fsp"_L1, "gsp"_L1, "rsp"_L1, "usp"_L1, "del"_L1,
    // std_logic_1164
    "std_ulogic"_L1, "std_ulogic_vector"_L1, "std_logic"_L1, "std_logic_vector"_L1, "x01"_L1, "x01z"_L1, "ux01"_L1,
    "ux01z"_L1, "resolved"_L1, "to_bit"_L1, "to_bitvector"_L1, "to_x01"_L1, "to_x01z"_L1, "to_ux01"_L1,
    "rising_edge"_L1, "falling_edge"_L1, "is_x"_L1,
    // of both in VHDL-2008
    "boolean_vector"_L1, "integer_vector"_L1, "real_vector"_L1, "time_vector"_L1, "minimum"_L1, "maximum"_L1,
    "to_string"_L1, "to_bstring"_L1, "to_binary_string"_L1, "to_ostring"_L1, "to_octal_string"_L1, "to_hstring"_L1,
    "to_hex_string"_L1, "to_01"_L1, "read"_L1, "write"_L1, "bread"_L1, "bwrite"_L1, "binary_read"_L1, "binary_write"_L1,
    "oread"_L1, "owrite"_L1, "octal_read"_L1, "octal_write"_L1, "hread"_L1, "hwrite"_L1, "hex_read"_L1, "hex_write"_L1,
    "to_stdulogic"_L1, "to_stdlogicvector"_L1, "to_stdulogicvector"_L1, "to_bv"_L1, "to_bit_vector"_L1, "to_slv"_L1,
    "to_std_logic_vector"_L1, "to_suv"_L1, "to_sulv"_L1, "to_std_ulogic_vector"_L1,
    // libraries
    "ieee"_L1, "std"_L1, "work"_L1};

} // namespace

StaticResult evaluateStatic(const QString &text, const ConstantLookup &constants, qint64 *value)
{
    constexpr qsizetype kSmallNumber = 9; // digits
    const auto isDigit = [](QChar c) { return c >= u'0' && c <= u'9'; };
    if (!text.isEmpty() && text.size() <= kSmallNumber && std::ranges::all_of(text, isDigit)) {
        if (value)
            *value = text.toLongLong();
        return StaticResult::Value;
    }
    return Reader(text, constants).read(value);
}

bool isDeclarableName(const QString &name)
{
    static const QSet<QString> reserved(std::begin(kReservedWords), std::end(kReservedWords));
    if (!std::ranges::all_of(name, isNameCharacter) || name.isEmpty() || name.front().isDigit())
        return false;
    // Each underscore stands between letters and digits.
    if (name.startsWith(u'_') || name.endsWith(u'_') || name.contains("__"_L1))
        return false;
    return !reserved.contains(name.toLower());
}

bool isStandardName(const QString &name)
{
    static const QSet<QString> standard(std::begin(kStandardNames), std::end(kStandardNames));
    return standard.contains(name.toLower());
}

} // namespace veldmap
