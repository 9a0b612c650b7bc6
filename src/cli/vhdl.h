#pragma once

#include <QString>

class VMMemoryMap;

namespace veldmap::cli {

struct Options;

/// Whether \a options name a chip, of which there are packages; an error is told when they don't.
[[nodiscard]] bool requireChip(const Options &options);

/// Writes the packages of the chip of \a map below \a directory, and tells what VHDL will not take of them; false, with
/// errors told, when a file could not be written.
[[nodiscard]] bool writePackages(const VMMemoryMap &map, const QString &directory);

} // namespace veldmap::cli
