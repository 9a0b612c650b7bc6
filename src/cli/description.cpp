#include "cli/description.h"

#include "cli/program_rules.h"
#include "cli/session.h"
#include "loading/load.h"
#include "model/root_archive.h"

namespace veldmap::cli {

namespace {

VMRootArchive *load(Session &session, const QString &path, bool chip, int threads)
{
    const int errorsBefore = session.messages.errorCount();
    VMRootArchive *root =
        loadRoot(session.map, path, chip, session.messages, {.threads = threads}).release(); // the map will own it
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
        map.chipRootArchive = load(session, options.chip, true, options.threads);
    if (!options.soft.isEmpty())
        map.softRootArchive = load(session, options.soft, false, options.threads);
    session.messages.clearProgress();
    return (options.chip.isEmpty() || map.chipRootArchive) && (options.soft.isEmpty() || map.softRootArchive);
}

} // namespace veldmap::cli
