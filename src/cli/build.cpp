#include "cli/commands.h"
#include "cli/description.h"
#include "cli/docs.h"
#include "cli/headers.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "cli/vhdl.h"

namespace veldmap::cli {

ExitStatus build(const Options &options, Session &session)
{
    if (options.headersDirectory.isEmpty() && options.vhdlDirectory.isEmpty() && options.docsDirectory.isEmpty()) {
        session.messages.tell(rules::kNothingAsked);
        return kWrongUsage;
    }
    if (!options.vhdlDirectory.isEmpty() && !requireChip(options, session.messages))
        return kWrongUsage;
    if (!loadDescriptions(options, session))
        return kFailed;
    // What can be written is, also when something before it could not be.
    bool written = true;
    if (!options.headersDirectory.isEmpty())
        written = writeAllHeaders(session, options.headersDirectory) && written;
    if (!options.vhdlDirectory.isEmpty())
        written = writePackages(session, options.vhdlDirectory) && written;
    if (!options.docsDirectory.isEmpty())
        written = writeSites(session, options.docsDirectory) && written;
    return written ? kDone : kFailed;
}

} // namespace veldmap::cli
