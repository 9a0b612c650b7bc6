#include "cli/commands.h"
#include "cli/description.h"
#include "cli/result.h"
#include "cli/session.h"
#include "export/tree_json.h"
#include "export/tree_text.h"

namespace veldmap::cli {

ExitStatus tree(const Options &options, Session &session)
{
    if (!loadDescriptions(options, session))
        return kFailed;
    Result result(options.output.mostBytes, session.messages);
    if (!options.json)
        writeTreeText(session.map, result);
    else if (writeTreeJson(session.map, result))
        result.take(QByteArrayView("\n"));
    return result.finish() ? kDone : kFailed;
}

} // namespace veldmap::cli
