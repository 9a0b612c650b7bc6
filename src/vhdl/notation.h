#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>

/// \a text in VHDL notation: exp2(n) as 2**(n), hexadecimal literals as 16#..#. A call ends at the first closing
/// parenthesis, so that a nested call stays balanced.
VELDMAP_EXPORT QString vhdl_clean_expr(const QString &text);

/// The number of address bits of so many \a bits of memory: the logarithm of the bytes to base 2, rounded up; 1 for
/// none.
VELDMAP_EXPORT int vhdl_log2(int bits);

/// \a text with its hexadecimal literals in VHDL notation: 0x1F becomes 16#1F#.
VELDMAP_EXPORT QString vhdl_hexadecimal_regularize(const QString &text);
