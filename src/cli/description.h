#pragma once

#include "cli/options.h"

class VMMemoryMap;

namespace veldmap::cli {

/// Loads the roots that \a options name into \a map, the chip first. The software is loaded too when the chip fails, so
/// that one run shows the messages of both. False when one of them did not load.
[[nodiscard]] bool loadDescriptions(const Options &options, VMMemoryMap &map);

/// The one memory map of the process, which ends with it: to take a tree of a million elements apart would only delay
/// the exit.
VMMemoryMap &processMemoryMap();

} // namespace veldmap::cli
