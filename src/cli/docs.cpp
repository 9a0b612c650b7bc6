#include "cli/commands.h"
#include "cli/writing.h"

namespace veldmap::cli {

ExitStatus docs(const Options &options, Session &session)
{
    return loadAndWrite(options, Output::Docs, session);
}

} // namespace veldmap::cli
