#pragma once

#include <QtGlobal>

/// Arithmetic on 32-bit register values that is defined for every operand.
///
/// Positions, widths and sizes come from expressions in a description and may be anything an int holds, so sums wrap
/// modulo 2 to the 32nd power and a shift past either end gives 0.
namespace veldmap {

/// The \a width low bits set; none for a \a width below 1, all 32 from 32 on.
constexpr quint32 lowBits(qint64 width)
{
    if (width < 1)
        return 0;
    return width >= 32 ? 0xFFFFFFFFu : (1u << width) - 1u;
}

/// \a value moved up by \a count bits; a negative \a count moves down. Bits that leave the word are lost.
constexpr quint32 shiftLeft(quint32 value, qint64 count)
{
    if (count <= -32 || count >= 32)
        return 0;
    return count >= 0 ? value << count : value >> -count;
}

constexpr quint32 shiftRight(quint32 value, qint64 count)
{
    return shiftLeft(value, -count);
}

/// The bits \a down to \a up of a word set, in place; 0 when \a up lies below \a down. Positions outside the word
/// contribute nothing.
constexpr quint32 bitRange(qint64 up, qint64 down)
{
    if (up < down || up < 0 || down > 31)
        return 0;
    return lowBits(up + 1) & ~lowBits(down);
}

constexpr int wrappingAdd(int a, int b)
{
    return static_cast<int>(static_cast<quint32>(a) + static_cast<quint32>(b));
}

constexpr int wrappingSubtract(int a, int b)
{
    return static_cast<int>(static_cast<quint32>(a) - static_cast<quint32>(b));
}

constexpr int wrappingMultiply(int a, int b)
{
    return static_cast<int>(static_cast<quint32>(a) * static_cast<quint32>(b));
}

} // namespace veldmap
