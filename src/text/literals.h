#pragma once

#include "veldmap_export.h"

#include "text/names.h"

#include <QString>

#include <optional>

/// Number literals of expressions. No text makes any of these fail.

/// \a expression with its hexadecimal (0x1F) and binary (0b101) literals as decimal numbers, which are all that the
/// evaluator reads. A literal that continues a name (FOO_0x10) stays; a hexadecimal one beyond 32 bits becomes
/// 4294967295.
VELDMAP_EXPORT QString hexadecimalPreparseExpression(const QString &expression);

/// The number of a text of binary digits, with or without "0b" in front. Any character but "1" counts as a zero digit;
/// digits beyond the 32nd from the right are dropped.
VELDMAP_EXPORT unsigned int convertBinaryStringToUnsignedInt(const QString &digits);

namespace veldmap {

/// \a text with each number literal of one notation as \a replacement gives it: "0", \a letter in either case, then all
/// the digits of the notation that follow. A literal that continues a name or a number stays.
template <typename Replacement>
QString replaceLiterals(const QString &text, char16_t letter, bool (*isDigit)(QChar), const Replacement &replacement);

/// The number that \a text is where people write one by hand: decimal, 0x hexadecimal or 0b binary, with a "-" in front
/// if it is negative. Nothing when it is none, or beyond 64 bits.
VELDMAP_EXPORT std::optional<qint64> numberOf(const QString &text);

VELDMAP_EXPORT bool isHexDigit(QChar character);
VELDMAP_EXPORT bool isBinaryDigit(QChar character);

/// The length of the literal that begins at \a start of \a text, 0 when there is none.
qsizetype literalLength(QStringView text, qsizetype start, char16_t letter, bool (*isDigit)(QChar));

template <typename Replacement>
QString replaceLiterals(const QString &text, char16_t letter, bool (*isDigit)(QChar), const Replacement &replacement)
{
    if (!text.contains(QChar(letter), Qt::CaseInsensitive))
        return text;
    QString result;
    qsizetype begin = 0; // of the run without a literal
    for (qsizetype at = text.indexOf(u'0'); at >= 0; at = text.indexOf(u'0', at + 1)) {
        const qsizetype length = literalLength(text, at, letter, isDigit);
        if (length == 0)
            continue;
        result += QStringView(text).sliced(begin, at - begin);
        result += replacement(QStringView(text).sliced(at, length));
        begin = at + length;
        at = begin - 1;
    }
    result += QStringView(text).sliced(begin);
    return result;
}

} // namespace veldmap
