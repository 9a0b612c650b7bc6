#include "cli/commands.h"
#include "cli/description.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "cli/writing.h"

namespace veldmap::cli {

ExitStatus build(const Options &options, Session &session)
{
    if (options.headersDirectory.isEmpty() && options.vhdlDirectory.isEmpty() && options.docsDirectory.isEmpty()) {
        session.messages.tell(rules::kNothingAsked);
        return kWrongUsage;
    }
    if (!options.vhdlDirectory.isEmpty() && !requireChip(options, session))
        return kWrongUsage;
    if (!loadAndLint(options, session))
        return kFailed;
    // What can be written is, also when something before it could not be.
    bool isComplete = true;
    if (!options.headersDirectory.isEmpty())
        isComplete = writeHeaders(session, options.headersDirectory, options) && isComplete;
    if (!options.vhdlDirectory.isEmpty())
        isComplete = writeFiles(session, Output::Vhdl, options.vhdlDirectory, options) && isComplete;
    if (!options.docsDirectory.isEmpty())
        isComplete = writeFiles(session, Output::Docs, options.docsDirectory, options) && isComplete;
    return isComplete ? kDone : kFailed;
}

} // namespace veldmap::cli
