#include "import/ipxact_expression.h"

#include <algorithm>
#include <bit>
#include <iterator>
#include <limits>
#include <vector>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

using Value = std::optional<qint64>;

// Arithmetic wraps at 64 bits, as that of every tool does somewhere.
qint64 wrapped(quint64 value)
{
    return static_cast<qint64>(value);
}
quint64 bits(qint64 value)
{
    return static_cast<quint64>(value);
}

Value divided(qint64 left, qint64 right)
{
    if (right == 0)
        return {};
    return right == -1 ? wrapped(0 - bits(left)) : left / right;
}

Value remainder(qint64 left, qint64 right)
{
    if (right == 0)
        return {};
    return right == -1 ? 0 : left % right;
}

Value power(qint64 base, qint64 exponent)
{
    if (exponent < 0)
        return {};
    quint64 result = 1;
    quint64 factor = bits(base);
    for (quint64 left = bits(exponent); left > 0; left >>= 1) {
        if (left & 1)
            result *= factor;
        factor *= factor;
    }
    return wrapped(result);
}

Value shiftedLeft(qint64 value, qint64 count)
{
    return count < 0 || count > 63 ? 0 : wrapped(bits(value) << count);
}

Value shiftedRight(qint64 value, qint64 count)
{
    return count < 0 || count > 63 ? 0 : wrapped(bits(value) >> count);
}

struct Operator {
    QStringView sign;
    int rank; ///< the higher, the closer it binds
    Value (*apply)(qint64 left, qint64 right);
};

// A sign that begins as another does stands in front of it.
constexpr Operator kOperators[] = {
    {u"**", 11, power},
    {u"||", 1, [](qint64 l, qint64 r) -> Value { return l || r; }},
    {u"&&", 2, [](qint64 l, qint64 r) -> Value { return l && r; }},
    {u"<<<", 8, shiftedLeft},
    {u">>>", 8, shiftedRight},
    {u"<<", 8, shiftedLeft},
    {u">>", 8, shiftedRight},
    {u"<=", 7, [](qint64 l, qint64 r) -> Value { return l <= r; }},
    {u">=", 7, [](qint64 l, qint64 r) -> Value { return l >= r; }},
    {u"==", 6, [](qint64 l, qint64 r) -> Value { return l == r; }},
    {u"!=", 6, [](qint64 l, qint64 r) -> Value { return l != r; }},
    {u"<", 7, [](qint64 l, qint64 r) -> Value { return l < r; }},
    {u">", 7, [](qint64 l, qint64 r) -> Value { return l > r; }},
    {u"|", 3, [](qint64 l, qint64 r) -> Value { return l | r; }},
    {u"^", 4, [](qint64 l, qint64 r) -> Value { return l ^ r; }},
    {u"&", 5, [](qint64 l, qint64 r) -> Value { return l & r; }},
    {u"+", 9, [](qint64 l, qint64 r) -> Value { return wrapped(bits(l) + bits(r)); }},
    {u"-", 9, [](qint64 l, qint64 r) -> Value { return wrapped(bits(l) - bits(r)); }},
    {u"*", 10, [](qint64 l, qint64 r) -> Value { return wrapped(bits(l) * bits(r)); }},
    {u"/", 10, divided},
    {u"%", 10, remainder},
};

struct Function {
    QStringView name;
    std::size_t arguments;
    Value (*call)(const std::vector<qint64> &arguments);
};

constexpr Function kFunctions[] = {
    {u"$clog2", 1,
     [](const std::vector<qint64> &a) -> Value {
         return a[0] < 1 ? Value(0) : Value(64 - std::countl_zero(bits(a[0]) - 1));
     }},
    {u"$pow", 2, [](const std::vector<qint64> &a) { return power(a[0], a[1]); }},
    {u"$min", 2, [](const std::vector<qint64> &a) -> Value { return std::min(a[0], a[1]); }},
    {u"$max", 2, [](const std::vector<qint64> &a) -> Value { return std::max(a[0], a[1]); }},
    {u"$abs", 1, [](const std::vector<qint64> &a) -> Value { return a[0] < 0 ? wrapped(0 - bits(a[0])) : a[0]; }},
};

/// The value of \a c as a digit, 99 for none.
int digitOf(QChar c)
{
    const char16_t folded = c.unicode() | 0x20;
    if (c >= u'0' && c <= u'9')
        return c.unicode() - u'0';
    return folded >= u'a' && folded <= u'f' && c.unicode() < 0x80 ? folded - u'a' + 10 : 99;
}

/// The digits of \a base in \a text, between which "_" may stand. Nothing when it has others, none, or too many.
Value digits(QStringView text, int base)
{
    quint64 number = 0;
    bool isAny = false;
    for (const QChar c : text) {
        if (c == u'_' && isAny)
            continue;
        const int digit = digitOf(c);
        if (digit >= base || number > (std::numeric_limits<quint64>::max() - quint64(digit)) / quint64(base))
            return {};
        number = number * quint64(base) + quint64(digit);
        isAny = true;
    }
    return isAny ? Value(wrapped(number)) : Value();
}

bool isWordCharacter(QChar c)
{
    return c == u'_' || c == u'$' || c == u'.' || c == u'\'' || c.isLetterOrNumber();
}

int baseOf(QChar letter)
{
    switch (letter.toLower().unicode()) {
    case u'h':
        return 16;
    case u'd':
        return 10;
    case u'o':
        return 8;
    case u'b':
        return 2;
    default:
        return 0;
    }
}

/// The number that \a word is, in any of the forms that documents have.
Value numberOf(QStringView word)
{
    if (const qsizetype quote = word.indexOf(u'\''); quote >= 0) {
        QStringView rest = word.sliced(quote + 1);
        if (quote > 0 && !digits(word.first(quote), 10))
            return {};
        if (rest.startsWith(u's') || rest.startsWith(u'S'))
            rest = rest.sliced(1);
        const int base = rest.isEmpty() ? 0 : baseOf(rest[0]);
        return base == 0 ? Value() : digits(rest.sliced(1), base);
    }
    if (word.startsWith("0x"_L1, Qt::CaseInsensitive))
        return digits(word.sliced(2), 16);
    if (word.startsWith(u'#'))
        return digits(word.sliced(1), 16);
    constexpr QStringView kUnits = u"kmgt";
    const qsizetype unit = word.size() < 2 ? -1 : kUnits.indexOf(word.back().toLower());
    const Value number = digits(unit < 0 ? word : word.chopped(1), 10);
    return number && unit >= 0 ? shiftedLeft(*number, 10 * (unit + 1)) : number;
}

} // namespace

/// Evaluates one expression from left to right, an operand and an operator at a time.
class IpxactEvaluator {
public:
    IpxactEvaluator(QStringView text, IpxactParameters &parameters) : m_text(text), m_parameters(parameters) {}

    Value evaluate()
    {
        const Value value = choice();
        skipBlanks();
        return value && m_at == m_text.size() ? value : Value();
    }

private:
    static constexpr int kDepth = 200; // of brackets, and of parameters in parameters

    void skipBlanks()
    {
        while (m_at < m_text.size() && m_text[m_at].isSpace())
            ++m_at;
    }

    bool take(QStringView sign)
    {
        skipBlanks();
        if (!m_text.sliced(m_at).startsWith(sign))
            return false;
        m_at += sign.size();
        return true;
    }

    /// CONDITION ? VALUE : VALUE, or an expression without a choice.
    Value choice()
    {
        int &depth = m_parameters.m_depth;
        if (depth >= kDepth)
            return {};
        ++depth;
        Value value = binary(1);
        if (value && take(u"?")) {
            const Value yes = choice();
            const Value no = yes && take(u":") ? choice() : Value();
            value = !no ? Value() : *value ? yes : no;
        }
        --depth;
        return value;
    }

    const Operator *peekOperator()
    {
        skipBlanks();
        const QStringView rest = m_text.sliced(m_at);
        const auto *const row =
            std::ranges::find_if(kOperators, [&](const Operator &one) { return rest.startsWith(one.sign); });
        return row == std::end(kOperators) ? nullptr : row;
    }

    Value binary(int lowestRank)
    {
        Value left = unary();
        while (left) {
            const Operator *sign = peekOperator();
            if (!sign || sign->rank < lowestRank)
                return left;
            m_at += sign->sign.size();
            const Value right = binary(sign->rank + 1);
            left = right ? sign->apply(*left, *right) : Value();
        }
        return left;
    }

    Value unary()
    {
        std::vector<char16_t> signs;
        for (skipBlanks(); m_at < m_text.size(); skipBlanks()) {
            const char16_t c = m_text[m_at].unicode();
            if (c != u'-' && c != u'+' && c != u'!' && c != u'~')
                break;
            signs.push_back(c);
            ++m_at;
        }
        const Value operand = primary();
        if (!operand)
            return {};
        quint64 value = bits(*operand);
        for (auto sign = signs.rbegin(); sign != signs.rend(); ++sign)
            value = *sign == u'-' ? 0 - value : *sign == u'~' ? ~value : *sign == u'!' ? !value : value;
        return wrapped(value);
    }

    Value primary()
    {
        if (take(u"(")) {
            const Value value = choice();
            return value && take(u")") ? value : Value();
        }
        const QStringView word = takeWord();
        if (word.isEmpty())
            return {};
        if (word.startsWith(u'$'))
            return call(word);
        if (const Value number = numberOf(word))
            return number;
        return m_parameters.valueOfParameter(word.toString());
    }

    QStringView takeWord()
    {
        skipBlanks();
        const qsizetype begin = m_at;
        if (m_at < m_text.size() && m_text[m_at] == u'#')
            ++m_at;
        while (m_at < m_text.size() && isWordCharacter(m_text[m_at]))
            ++m_at;
        return m_text.sliced(begin, m_at - begin);
    }

    Value call(QStringView name)
    {
        const auto *const function = std::ranges::find(kFunctions, name, &Function::name);
        if (function == std::end(kFunctions) || !take(u"("))
            return {};
        std::vector<qint64> arguments;
        do {
            const Value argument = choice();
            if (!argument || arguments.size() == function->arguments)
                return {};
            arguments.push_back(*argument);
        } while (take(u","));
        return take(u")") && arguments.size() == function->arguments ? function->call(arguments) : Value();
    }

    QStringView m_text;
    IpxactParameters &m_parameters;
    qsizetype m_at = 0;
};

void IpxactParameters::add(const QString &id, const QString &text)
{
    if (!id.isEmpty() && !m_parameters.contains(id))
        m_parameters.insert(id, {text});
}

std::optional<qint64> IpxactParameters::valueOf(QStringView expression)
{
    return IpxactEvaluator(expression, *this).evaluate();
}

std::optional<qint64> IpxactParameters::valueOfParameter(const QString &id)
{
    const auto found = m_parameters.find(id);
    if (found == m_parameters.end() || found->isOpen)
        return {};
    if (!found->isKnown) {
        found->isOpen = true;
        const QString text = found->text;
        const Value value = valueOf(text); // which adds none, so the place stays
        found->value = value;
        found->isKnown = true;
        found->isOpen = false;
    }
    return found->value;
}

} // namespace veldmap
