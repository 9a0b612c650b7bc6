#pragma once

#include <QString>

class VMMemoryMap;

namespace veldmap::cli {

/// Writes the headers of every root of \a map below \a directory, with both roots below its directories chip and soft.
/// False, with an error told for each, when a file could not be written.
[[nodiscard]] bool writeAllHeaders(const VMMemoryMap &map, const QString &directory);

} // namespace veldmap::cli
