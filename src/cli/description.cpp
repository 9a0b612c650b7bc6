#include "cli/description.h"

#include "cli/messages.h"
#include "loading/memory_map_loader.h"
#include "model/memory_map.h"

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

VMRootArchive *load(VMMemoryMap &map, const QString &path, bool chip)
{
    const int errorsBefore = errorCount();
    VMRootArchive *root = VMMemoryMapLoader().loadRootArchiveFromFile(&map, path, onLog, onError, onWarning, chip);
    // A file that can't be opened is only a warning of the library, and -q hides it.
    if (!root && errorCount() == errorsBefore)
        printError(u"%1 did not load."_s.arg(path));
    return root;
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
