#pragma once

#include <QString>

#include <optional>

namespace veldmap::cli {

/// The number that \a text is on a command line: decimal, 0x hexadecimal or 0b binary, with a "-" in front if it is
/// negative. Nothing for any other text, and for numbers beyond 64 bits.
std::optional<qint64> numberOf(const QString &text);

} // namespace veldmap::cli
