#include "cli/commands.h"
#include "cli/description.h"
#include "cli/docs.h"
#include "cli/headers.h"
#include "cli/messages.h"
#include "cli/vhdl.h"
#include "model/memory_map.h"

using namespace Qt::StringLiterals;

namespace veldmap::cli {

ExitStatus build(const Options &options)
{
    if (options.headersDirectory.isEmpty() && options.vhdlDirectory.isEmpty() && options.docsDirectory.isEmpty()) {
        printError(u"Nothing is asked for: name directories with --headers, --vhdl or --docs."_s);
        return kWrongUsage;
    }
    if (!options.vhdlDirectory.isEmpty() && !requireChip(options))
        return kWrongUsage;
    VMMemoryMap &map = processMemoryMap();
    if (!loadDescriptions(options, map))
        return kFailed;
    // What can be written is, also when something before it could not be.
    bool written = true;
    if (!options.headersDirectory.isEmpty())
        written = writeAllHeaders(map, options.headersDirectory) && written;
    if (!options.vhdlDirectory.isEmpty())
        written = writePackages(map, options.vhdlDirectory) && written;
    if (!options.docsDirectory.isEmpty())
        written = writeSites(map, options.docsDirectory) && written;
    return written ? kDone : kFailed;
}

} // namespace veldmap::cli
