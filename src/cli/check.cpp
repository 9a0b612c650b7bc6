#include "cli/commands.h"
#include "cli/description.h"

namespace veldmap::cli {

ExitStatus check(const Options &options, Session &session)
{
    return loadAndLint(options, session, InstanceParts::Outlines) ? kDone : kFailed;
}

} // namespace veldmap::cli
