#include "cli/commands.h"
#include "cli/description.h"
#include "model/memory_map.h"

namespace veldmap::cli {

ExitStatus check(const Options &options)
{
    VMMemoryMap &map = processMemoryMap();
    return loadDescriptions(options, map) ? kDone : kFailed;
}

} // namespace veldmap::cli
