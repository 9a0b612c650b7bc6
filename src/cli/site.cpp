#include "cli/commands.h"
#include "cli/writing.h"

namespace veldmap::cli {

ExitStatus site(const Options &options, Session &session)
{
    return loadAndWrite(options, {{Output::Site, options.outputDirectory}}, session);
}

} // namespace veldmap::cli
