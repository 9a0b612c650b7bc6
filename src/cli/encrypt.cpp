#include "cli/commands.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "container/container.h"

namespace veldmap::cli {

ExitStatus encrypt(const Options &options, Session &session)
{
    if (!encryptDescription(options.source, options.destination, session.messages,
                            options.exact ? ContainerDigest::None : ContainerDigest::InTheEnd))
        return kFailed;
    if (usesDevelopmentKey())
        session.messages.tell(rules::kDevelopmentKey, {options.destination});
    return kDone;
}

} // namespace veldmap::cli
