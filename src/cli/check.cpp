#include "cli/commands.h"
#include "cli/description.h"

namespace veldmap::cli {

ExitStatus check(const Options &options, Session &session)
{
    return loadAndLint(options, session) ? kDone : kFailed;
}

} // namespace veldmap::cli
