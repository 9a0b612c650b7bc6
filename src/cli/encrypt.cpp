#include "cli/commands.h"
#include "cli/library_messages.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "container/container.h"

namespace veldmap::cli {

ExitStatus encrypt(const Options &options, Session &session)
{
    const LibraryMessages library(session.messages);
    if (!encryptXMLDocument(options.source, options.destination, library.onLog, library.onError, library.onWarning))
        return kFailed;
    if (usesDevelopmentKey())
        session.messages.tell(rules::kDevelopmentKey, {options.destination});
    return kDone;
}

} // namespace veldmap::cli
