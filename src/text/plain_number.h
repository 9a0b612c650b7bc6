#pragma once

#include <QStringView>

#include <optional>

namespace veldmap {

/// The number that \a digits are in \a base, nothing when one of them is none. They are so few that an int holds it.
inline std::optional<int> numberOfDigits(QStringView digits, int base)
{
    int number = 0;
    for (const QChar c : digits) {
        const char16_t folded = c.unicode() | 0x20;
        const int digit = c >= u'0' && c <= u'9'             ? c.unicode() - u'0'
                          : folded >= u'a' && folded <= u'f' ? folded - u'a' + 10
                                                             : base;
        if (digit >= base)
            return std::nullopt;
        number = number * base + digit;
    }
    return number;
}

/// The value of \a expression if it is no more than a decimal or hexadecimal number that an int surely holds, as most
/// expressions are.
inline std::optional<int> plainNumber(QStringView expression)
{
    constexpr qsizetype kDecimalDigits = 9;
    constexpr qsizetype kHexadecimalDigits = 7;
    if (expression.isEmpty() || expression.size() > kDecimalDigits)
        return std::nullopt;
    if (expression.size() > 2 && expression[0] == u'0' && (expression[1] == u'x' || expression[1] == u'X'))
        return expression.size() - 2 > kHexadecimalDigits ? std::nullopt : numberOfDigits(expression.sliced(2), 16);
    return numberOfDigits(expression, 10);
}

} // namespace veldmap
