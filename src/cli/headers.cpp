#include "cli/commands.h"
#include "cli/session.h"
#include "cli/writing.h"

namespace veldmap::cli {

ExitStatus headers(const Options &options, Session &session)
{
    session.map.skipUpToDate = options.skipUpToDate;
    return loadAndWrite(options, wantedHeaders(options, options.outputDirectory), session);
}

} // namespace veldmap::cli
