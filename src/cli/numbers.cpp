#include "cli/numbers.h"

using namespace Qt::StringLiterals;

namespace veldmap::cli {

std::optional<qint64> numberOf(const QString &text)
{
    const bool isNegative = text.startsWith(u'-');
    const QString digits = text.sliced(isNegative ? 1 : 0).toLower();
    const int base = digits.startsWith("0x"_L1) ? 16 : digits.startsWith("0b"_L1) ? 2 : 10;
    const QString bare = digits.sliced(base == 10 ? 0 : 2);
    bool isNumber = !bare.isEmpty() && bare.front().isLetterOrNumber(); // no second sign
    const qint64 number = isNumber ? bare.toLongLong(&isNumber, base) : 0;
    if (!isNumber)
        return std::nullopt;
    return isNegative ? -number : number;
}

} // namespace veldmap::cli
