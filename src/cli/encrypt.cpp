#include "cli/commands.h"
#include "cli/messages.h"
#include "container/container.h"

using namespace Qt::StringLiterals;

namespace veldmap::cli {

ExitStatus encrypt(const Options &options)
{
    if (!encryptXMLDocument(options.source, options.destination, onLog, onError, onWarning))
        return kFailed;
    if (usesDevelopmentKey())
        printWarning(
            u"%1 keeps nothing secret: this veldmap was built with the development key, which everybody has."_s.arg(
                options.destination));
    return kDone;
}

} // namespace veldmap::cli
