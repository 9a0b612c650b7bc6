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

bool writeEachRoot(const VMMemoryMap &map, const QString &directory,
                   const std::function<bool(const QString &directory, bool chip)> &write)
{
    const bool hasBoth = map.chipRootArchive && map.softRootArchive;
    bool written = true;
    if (map.chipRootArchive)
        written = write(hasBoth ? directory + "/chip"_L1 : directory, true) && written;
    if (map.softRootArchive)
        written = write(hasBoth ? directory + "/soft"_L1 : directory, false) && written;
    return written;
}

} // namespace veldmap::cli
