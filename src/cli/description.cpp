#include "cli/description.h"

#include "cli/messages.h"
#include "loading/memory_map_loader.h"
#include "model/memory_map.h"

namespace veldmap::cli {

namespace {

VMRootArchive *load(VMMemoryMap &map, const QString &path, bool chip)
{
    return VMMemoryMapLoader().loadRootArchiveFromFile(&map, path, onLog, onError, onWarning, chip);
}

} // namespace

VMMemoryMap &processMemoryMap()
{
    static VMMemoryMap *const map = std::make_unique<VMMemoryMap>().release();
    return *map;
}

bool loadDescriptions(const Options &options, VMMemoryMap &map)
{
    if (!options.chip.isEmpty())
        map.chipRootArchive = load(map, options.chip, true);
    if (!options.soft.isEmpty())
        map.softRootArchive = load(map, options.soft, false);
    clearProgress();
    return (options.chip.isEmpty() || map.chipRootArchive) && (options.soft.isEmpty() || map.softRootArchive);
}

} // namespace veldmap::cli
