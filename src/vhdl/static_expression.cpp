#include "vhdl/static_expression.h"

#include "common/text.h"

#include <QSet>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr qint64 kGreatestInteger = 0x7FFFFFFF; // the least is its negative
constexpr int kNesting = 256;                   // parentheses inside one another

/// Reads an expression from left to right:
///
///     expression = [sign] term {(+ | -) term}
///     term = factor {(* | /) factor}
///     factor = primary [** primary]
///     primary = literal | name | ( expression )
///
/// So 2*-1 and 2**3**4 are none.
class Reader {
public:
    Reader(QStringView text, const ConstantLookup &constants) : m_rest(text), m_constants(constants) {}

    StaticResult read()
    {
        const qint64 value = expression();
        skipBlanks();
        if (!m_isReadable || !m_rest.isEmpty())
            return StaticResult::Unreadable;
        limit(value);
        return m_isTooLarge ? StaticResult::TooLarge : StaticResult::Value;
    }

private:
    qint64 expression()
    {
        const bool isNegative = take("-"_L1);
        if (!isNegative)
            take("+"_L1);
        qint64 value = isNegative ? -term() : term();
        while (m_isReadable) {
            if (take("+"_L1))
                value = limit(value + term());
            else if (take("-"_L1))
                value = limit(value - term());
            else
                break;
        }
        return value;
    }

    qint64 term()
    {
        qint64 value = factor();
        while (m_isReadable) {
            if (take("*"_L1)) {
                value = limit(value * factor());
            } else if (take("/"_L1)) {
                const qint64 divisor = factor();
                value = divisor == 0 ? fail() : value / divisor;
            } else {
                break;
            }
        }
        return value;
    }

    qint64 factor()
    {
        const qint64 base = primary();
        if (!take("**"_L1))
            return base;
        const qint64 exponent = primary();
        if (exponent < 0)
            return fail();
        // Every base beyond -1 to 1 has left the integers long before.
        qint64 power = 1;
        for (qint64 step = 0; step < qMin<qint64>(exponent, 64 + (exponent & 1)); ++step)
            power = limit(power * base);
        return power;
    }

    qint64 primary()
    {
        if (take("("_L1)) {
            if (++m_depth > kNesting)
                return fail();
            const qint64 value = expression();
            --m_depth;
            return take(")"_L1) ? value : fail();
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
        return value ? limit(*value) : fail();
    }

    qint64 literal(QStringView word)
    {
        const bool isHexadecimal = word.size() > 4 && word.startsWith("16#"_L1) && word.endsWith(u'#');
        const QStringView digits = isHexadecimal ? word.sliced(3).chopped(1) : word;
        const bool isLiteral = std::ranges::all_of(
            digits, isHexadecimal ? isHexDigit : [](QChar c) { return c >= u'0' && c <= u'9'; });
        if (!isLiteral)
            return fail();
        bool isSmall = false;
        const qint64 value = digits.toLongLong(&isSmall, isHexadecimal ? 16 : 10);
        return limit(isSmall ? value : kGreatestInteger + 1);
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

    /// \a value, or 0 and a note when no integer holds it.
    qint64 limit(qint64 value)
    {
        if (value >= -kGreatestInteger && value <= kGreatestInteger)
            return value;
        m_isTooLarge = true;
        return 0;
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
    // names that the lines of a package use themselves
    "integer"_L1, "natural"_L1, "std_logic_vector"_L1};

} // namespace

StaticResult evaluateStatic(const QString &text, const ConstantLookup &constants)
{
    constexpr qsizetype kSmallNumber = 9; // digits
    const auto isDigit = [](QChar c) { return c >= u'0' && c <= u'9'; };
    if (!text.isEmpty() && text.size() <= kSmallNumber && std::ranges::all_of(text, isDigit))
        return StaticResult::Value;
    return Reader(text, constants).read();
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

} // namespace veldmap
