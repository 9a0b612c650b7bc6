#include "cli/commands.h"
#include "cli/writing.h"

namespace veldmap::cli {

ExitStatus docs(const Options &options, Session &session)
{
    return loadAndWrite(options, {{Output::Docs, options.outputDirectory}}, session);
}

} // namespace veldmap::cli
