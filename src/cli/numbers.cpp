#include "cli/numbers.h"

#include "text/literals.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

struct Notation {
    QLatin1StringView prefix;
    int base;
    bool (*isDigit)(QChar character);
};
constexpr Notation kNotations[] = {
    {"0x"_L1, 16, isHexDigit},
    {"0b"_L1, 2, isBinaryDigit},
    {""_L1, 10, [](QChar character) { return character >= u'0' && character <= u'9'; }},
};

} // namespace

std::optional<qint64> numberOf(const QString &text)
{
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

} // namespace veldmap::cli
