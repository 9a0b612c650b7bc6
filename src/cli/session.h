#pragma once

#include "cli/messages.h"
#include "loading/load.h"
#include "model/memory_map.h"

namespace veldmap::cli {

/// One run of the program: what it loads and what it tells.
struct Session {
    Messages messages;
    VMMemoryMap map;
    ReadFiles files; ///< of the descriptions in the map
};

} // namespace veldmap::cli
