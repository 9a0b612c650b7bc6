#include "cli/description.h"

#include "cli/library_messages.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "loading/memory_map_loader.h"

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

VMRootArchive *load(Session &session, const QString &path, bool chip)
{
    const LibraryMessages library(session.messages);
    const int errorsBefore = session.messages.errorCount();
    VMRootArchive *root = VMMemoryMapLoader().loadRootArchiveFromFile(&session.map, path, library.onLog,
                                                                      library.onError, library.onWarning, chip);
    // A file that can't be opened is only a warning of the library, and -q hides it.
    if (!root && session.messages.errorCount() == errorsBefore)
        session.messages.tell(rules::kNotLoaded, {path});
    return root;
}

} // namespace

bool loadDescriptions(const Options &options, Session &session)
{
    VMMemoryMap &map = session.map;
    if (!options.chip.isEmpty())
        map.chipRootArchive = load(session, options.chip, true);
    if (!options.soft.isEmpty())
        map.softRootArchive = load(session, options.soft, false);
    session.messages.clearProgress();
    return (options.chip.isEmpty() || map.chipRootArchive) && (options.soft.isEmpty() || map.softRootArchive);
}

} // namespace veldmap::cli
