#include "text/literals.h"

#include "text/literal_scan.h"
#include "text/names.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

struct Notation {
    QLatin1StringView prefix;
    int base;
    bool (*isDigit)(QChar character);
};
constexpr Notation kNotations[] = {
    {"0x"_L1, 16, veldmap::isHexDigit},
    {"0b"_L1, 2, veldmap::isBinaryDigit},
    {""_L1, 10, [](QChar character) { return character >= u'0' && character <= u'9'; }},
};

/// The number that a hexadecimal digit stands for.
quint64 digitValue(QChar digit)
{
    const char16_t c = digit.unicode();
    return c <= u'9' ? c - u'0' : (c | 0x20) - u'a' + 10;
}

} // namespace

namespace veldmap {

bool isHexDigit(QChar character)
{
    const char16_t c = character.unicode();
    return (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'F') || (c >= u'a' && c <= u'f');
}

bool isBinaryDigit(QChar character)
{
    return character == u'0' || character == u'1';
}

QString decimalText(int value)
{
    constexpr int kBits = 65; // positions of a word of 64 bits, and the one behind
    static const auto bitNumbers = [] {
        std::array<QString, kBits> texts;
        for (int number = 0; number < kBits; ++number)
            texts[static_cast<std::size_t>(number)] = QString::number(number);
        return texts;
    }();
    return value >= 0 && value < kBits ? bitNumbers[static_cast<std::size_t>(value)] : QString::number(value);
}

std::optional<qint64> numberOf(const QString &text)
{
    if (text.isEmpty()) // a null text does not even begin with an empty one
        return std::nullopt;
    const bool isNegative = text.startsWith(u'-');
    const QStringView unsignedText = QStringView(text).sliced(isNegative ? 1 : 0);
    const auto notation = std::ranges::find_if(
        kNotations, [&](const Notation &row) { return unsignedText.startsWith(row.prefix, Qt::CaseInsensitive); });
    const QStringView digits = unsignedText.sliced(notation->prefix.size());
    bool isNumber = std::ranges::all_of(digits, notation->isDigit); // toLongLong also takes prefixes and blanks
    const qint64 number = isNumber ? digits.toLongLong(&isNumber, notation->base) : 0;
    if (!isNumber)
        return std::nullopt;
    return isNegative ? -number : number;
}

qsizetype literalLength(QStringView text, qsizetype start, char16_t letter, bool (*isDigit)(QChar))
{
    if (text[start] != u'0' || start + 2 >= text.size() || text[start + 1].toLower() != letter ||
        !isDigit(text[start + 2]) || (start > 0 && isNameCharacter(text[start - 1])))
        return 0;
    qsizetype end = start + 3;
    while (end < text.size() && isDigit(text[end]))
        ++end;
    return end - start;
}

} // namespace veldmap

QString hexadecimalPreparseExpression(const QString &expression)
{
    const auto hexValue = [](QStringView literal) {
        quint64 value = 0;
        for (const QChar digit : literal.sliced(2))
            value = qMin<quint64>(value * 16 + digitValue(digit), 0xFFFFFFFFu);
        return QString::number(value);
    };
    const auto binaryValue = [](QStringView literal) {
        return QString::number(convertBinaryStringToUnsignedInt(literal.toString()));
    };
    return veldmap::replaceLiterals(veldmap::replaceLiterals(expression, u'x', veldmap::isHexDigit, hexValue), u'b',
                                    veldmap::isBinaryDigit, binaryValue);
}

unsigned int convertBinaryStringToUnsignedInt(const QString &digits)
{
    const bool prefixed = digits.startsWith("0b"_L1) || digits.startsWith("0B"_L1);
    unsigned int value = 0;
    for (const QChar digit : QStringView(digits).sliced(prefixed ? 2 : 0))
        value = (value << 1) | (digit == u'1' ? 1u : 0u);
    return value;
}
