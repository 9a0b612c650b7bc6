#include "cli/commands.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "cli/writing.h"

#include <algorithm>

namespace veldmap::cli {

ExitStatus build(const Options &options, Session &session)
{
    const QString *const directories[] = {&options.headersDirectory, &options.vhdlDirectory, &options.siteDirectory,
                                          &options.docsDirectory};
    if (std::ranges::all_of(directories, [](const QString *directory) { return directory->isEmpty(); })) {
        session.messages.tell(rules::kNothingAsked);
        return kWrongUsage;
    }
    if (options.selfCheck && options.headersDirectory.isEmpty() && options.vhdlDirectory.isEmpty()) {
        session.messages.tell(rules::kNothingChecked);
        return kWrongUsage;
    }
    if (!options.vhdlDirectory.isEmpty() && !requireChip(options, session))
        return kWrongUsage;
    std::vector<WantedOutput> wanted;
    if (!options.headersDirectory.isEmpty())
        wanted = wantedHeaders(options, options.headersDirectory);
    if (!options.vhdlDirectory.isEmpty())
        wanted.push_back({Output::Vhdl, options.vhdlDirectory});
    if (!options.siteDirectory.isEmpty())
        wanted.push_back({Output::Site, options.siteDirectory});
    if (!options.docsDirectory.isEmpty())
        wanted.push_back({Output::Docs, options.docsDirectory});
    return loadAndBuild(options, wanted, session);
}

} // namespace veldmap::cli
