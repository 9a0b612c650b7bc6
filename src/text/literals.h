#pragma once

#include <veldmap/veldmap_export.h>

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

/// The number that \a text is where people write one by hand: decimal, 0x hexadecimal or 0b binary, with a "-" in front
/// if it is negative. Nothing when it is none, or beyond 64 bits.
VELDMAP_EXPORT std::optional<qint64> numberOf(const QString &text);

/// \a value in decimal. The texts of bit numbers, which a description has many of, share their storage.
QString decimalText(int value);

} // namespace veldmap
