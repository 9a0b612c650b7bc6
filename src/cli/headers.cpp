#include "cli/commands.h"
#include "cli/description.h"
#include "cli/session.h"
#include "cli/writing.h"

namespace veldmap::cli {

ExitStatus headers(const Options &options, Session &session)
{
    session.map.skipUpToDate = options.skipUpToDate;
    if (!loadAndLint(options, session))
        return kFailed;
    return writeHeaders(session, options.outputDirectory, options) ? kDone : kFailed;
}

} // namespace veldmap::cli
