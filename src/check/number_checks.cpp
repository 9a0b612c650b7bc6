#include "check/number_checks.h"

#include "check/c_expression.h"
#include "check/document_rules.h"
#include "expression/evaluator.h"
#include "model/variables.h"
#include "text/bit_arithmetic.h"
#include "text/literal_scan.h"
#include "text/literals.h"
#include "text/names.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <optional>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Gives names that the document does not declare a value each, which tells apart how operators group.
class SupposedNames final : public CXMLVarCtx {
public:
    explicit SupposedNames(const QHash<QString, int> &known) : m_known(known) {}

    int getValue(const char *name, variant::Variant &result) override
    {
        result.setInt(valueOf(QString::fromUtf8(name)));
        return 1;
    }

    int valueOf(const QString &name)
    {
        if (const auto known = m_known.constFind(name); known != m_known.cend())
            return *known;
        constexpr int kPrimes[] = {3, 5, 7, 11, 13, 17, 19, 23};
        const auto supposed = m_supposed.constFind(name);
        if (supposed != m_supposed.cend())
            return *supposed;
        const int value = kPrimes[static_cast<std::size_t>(m_supposed.size()) % std::size(kPrimes)];
        m_supposed.insert(name, value);
        m_order += name;
        return value;
    }

    bool isSupposing() const { return !m_supposed.isEmpty(); }

    /// " (with A = 3, B = 5)", or nothing.
    QString text()
    {
        if (m_supposed.isEmpty())
            return {};
        constexpr qsizetype kShown = 4;
        QStringList values;
        for (const QString &name : m_order.first(qMin<qsizetype>(m_order.size(), kShown)))
            values += name + " = "_L1 + QString::number(valueOf(name));
        return " (with "_L1 + values.join(", "_L1) + u')';
    }

private:
    const QHash<QString, int> &m_known;
    QHash<QString, int> m_supposed;
    QStringList m_order; // of the supposed names
};

/// The value that a load computes; nothing where it fails.
std::optional<int> valueHere(QStringView expression, cexev::CExEvCtx &context)
{
    cexev::CExEv evaluator(&context);
    variant::Variant value;
    if (evaluator.evalExpression(hexadecimalPreparseExpression(expression.toString()).toUtf8().constData(), value) != 0)
        return std::nullopt;
    int number = 0;
    value.asInt(number);
    return number;
}

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

/// Whether \a expression is one name, or one literal that no language can misread.
bool isPlain(QStringView expression)
{
    const bool isOctal = expression.size() > 1 && expression[0] == u'0' && isDigit(expression[1]);
    return !isOctal && std::ranges::all_of(expression, isNameCharacter);
}

/// Whether the text of an attribute reaches the C or the assembly header.
bool isPrinted(const TagInContext &at, ValueKind kind)
{
    if (kind != ValueKind::CNumber && kind != ValueKind::Count && kind != ValueKind::Condition)
        return false;
    if (at.kind() != TagKind::EnumEntry) // whose text only assembly has, while C has the number
        return true;
    const TagInContext *archive = at.enclosing(TagKind::Archive);
    const QStringView assembly = archive ? archive->tag.attribute(u"asm") : QStringView();
    return assembly.isNull() || assembly == "yes"_L1;
}

} // namespace

void NumberChecks::check(const TagInContext &at, const AttributeRow &row, QStringView value)
{
    constexpr qsizetype kFewestDigitsBeyond32Bits = 10;
    if (row.value == ValueKind::Address)
        checkAddress(at, value);
    const bool isCut = value.size() >= kFewestDigitsBeyond32Bits && checkLiterals(at, row, value);
    if (!isPlain(value))
        checkValue(at, row, value, isCut);
}

/// Whether a literal was cut.
bool NumberChecks::checkLiterals(const TagInContext &at, const AttributeRow &row, QStringView value) const
{
    bool isCut = false;
    for (qsizetype begin = 0; begin < value.size();) {
        if (!isDigit(value[begin]) || (begin > 0 && (isNameCharacter(value[begin - 1]) || value[begin - 1] == u'.'))) {
            ++begin;
            continue;
        }
        const bool isHexadecimal = literalLength(value, begin, u'x', isHexDigit) > 0;
        const bool isBinary = literalLength(value, begin, u'b', isBinaryDigit) > 0;
        qsizetype end = begin + (isHexadecimal || isBinary ? 2 : 0);
        qsizetype significant = 0;
        for (; end < value.size() && (isHexadecimal ? isHexDigit(value[end]) : isDigit(value[end])); ++end)
            significant += significant > 0 || value[end] != u'0' ? 1 : 0;
        const QStringView literal = value.sliced(begin, end - begin);
        const bool isFraction = end < value.size() && (value[end] == u'.' || value[end].toLower() == u'e');
        bool fits = isFraction;
        if (isHexadecimal)
            fits = significant <= 8;
        else if (isBinary)
            fits = significant <= 32;
        else if (!isFraction)
            fits = significant < 10 || (significant == 10 && literal.toULongLong() <= 0xFFFFFFFFu);
        if (!fits) {
            const quint32 read = isBinary ? convertBinaryStringToUnsignedInt(literal.toString()) : 0xFFFFFFFFu;
            m_teller.tell(rules::numberTooLarge, at,
                          {shownText(literal), row.name, "0x"_L1 + QString::number(read, 16).toUpper()});
            isCut = true;
        }
        begin = end;
    }
    return isCut;
}

void NumberChecks::checkAddress(const TagInContext &at, QStringView value) const
{
    constexpr qsizetype kAddressDigits = 8;
    constexpr int kPage = 4096;
    const QStringView text = value.trimmed();
    if (text.isEmpty() || !isDigit(text.front()) || !std::ranges::all_of(text, isHexDigit))
        return;
    const bool isDecimal = std::ranges::all_of(text, isDigit);
    // 40001000 is no address that one writes in decimal; 16777216 may be.
    if (isDecimal && (text.size() != kAddressDigits || text.toUInt() % kPage == 0))
        return;
    SupposedNames names(m_names);
    const std::optional<int> read = valueHere(text, names);
    m_teller.tell(
        rules::hexadecimalAddress, at,
        {shownText(text), read ? "the number "_L1 + QString::number(static_cast<quint32>(*read)) : u"no number"_s});
}

void NumberChecks::checkValue(const TagInContext &at, const AttributeRow &row, QStringView value, bool isCut) const
{
    SupposedNames names(m_names);
    const std::optional<int> here = valueHere(value, names);
    if (!here) // the loader has the word
        return;
    const bool isCondition = row.value == ValueKind::Condition;
    const auto valueOf = [&](QStringView name) -> std::optional<qint32> { return names.valueOf(name.toString()); };
    using Status = CValue::Status;
    const CValue widest = evaluateInC(value, valueOf, CArithmetic::Widest);
    if (isPrinted(at, row.value) && !isCut) {
        const CValue inC = isCondition ? widest : evaluateInC(value, valueOf, CArithmetic::Int);
        const bool isSame = isCondition ? (inC.value != 0) == (*here != 0)
                                        : static_cast<quint32>(inC.value) == static_cast<quint32>(*here);
        const bool differs = inC.status == Status::Value       ? !isSame
                             : inC.status == Status::Undefined ? !names.isSupposing()
                                                               : inC.status == Status::NoNumber;
        if (differs) {
            m_teller.tell(rules::valueInC, at,
                          {row.name, shownText(value), QString::number(*here), inC.text(), names.text()});
            return;
        }
    }
    const bool isBeyond = widest.value > 0xFFFFFFFFll || widest.value < std::numeric_limits<qint32>::min();
    const bool isGrouped = static_cast<quint32>(widest.value) == static_cast<quint32>(*here) || value.contains("<<"_L1);
    if (widest.status == Status::Value && !widest.isUnsigned && isBeyond && isGrouped && !isCut && !names.isSupposing())
        m_teller.tell(rules::resultTooLarge, at, {row.name, shownText(value), widest.text(), QString::number(*here)});
}

void NumberChecks::learn(const TagInContext &at)
{
    QStringView value;
    switch (at.kind()) {
    case TagKind::Enum:
        m_lastEntry = -1;
        return;
    case TagKind::Variable:
    case TagKind::EnumEntry:
        value = at.tag.attribute(u"value");
        break;
    case TagKind::Range:
        value = at.tag.attribute(u"left");
        break;
    case TagKind::EnumBound:
        break;
    default:
        return;
    }
    const QString name = regularizeVariableName(at.tag.attribute(u"name").toString());
    std::optional<int> number = wrappingAdd(m_lastEntry, 1);
    if (!value.isEmpty()) {
        SupposedNames names(m_names);
        number = valueHere(value, names);
        if (names.isSupposing())
            number.reset();
    }
    if (!number) {
        m_names.remove(name);
        return;
    }
    m_names.insert(name, *number);
    if (at.kind() == TagKind::EnumEntry)
        m_lastEntry = *number;
}

} // namespace veldmap
