#pragma once

#include <QString>

class VMMemoryMap;

namespace veldmap::cli {

/// Writes the documentation site of every root of \a map into \a directory, with both roots into its directories chip
/// and soft. False, with an error told for each, when a file could not be written.
[[nodiscard]] bool writeSites(const VMMemoryMap &map, const QString &directory);

} // namespace veldmap::cli
