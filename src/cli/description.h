#pragma once

#include "cli/options.h"

#include <functional>

class VMMemoryMap;

namespace veldmap::cli {

/// Loads the roots that \a options name into \a map, the chip first. The software is loaded too when the chip fails, so
/// that one run shows the messages of both. False when one of them did not load.
[[nodiscard]] bool loadDescriptions(const Options &options, VMMemoryMap &map);

/// Calls \a write for each root of \a map with the directory for its files: \a directory, or with both roots the
/// directories chip and soft in it. The second is tried also when the first fails; false when one did.
[[nodiscard]] bool writeEachRoot(const VMMemoryMap &map, const QString &directory,
                                 const std::function<bool(const QString &directory, bool chip)> &write);

/// The one memory map of the process, which ends with it: to take a tree of a million elements apart would only delay
/// the exit.
VMMemoryMap &processMemoryMap();

} // namespace veldmap::cli
