#include "cli/commands.h"
#include "cli/description.h"
#include "cli/session.h"
#include "export/tree_json.h"
#include "export/tree_text.h"

namespace veldmap::cli {

ExitStatus tree(const Options &options, Session &session)
{
    if (!loadDescriptions(options, session))
        return kFailed;
    const QByteArray text = options.json ? treeJson(session.map) + '\n' : treeText(session.map).toUtf8();
    return printResult(text, session.messages) ? kDone : kFailed;
}

} // namespace veldmap::cli
