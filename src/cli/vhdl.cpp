#include "cli/commands.h"
#include "cli/writing.h"

namespace veldmap::cli {

ExitStatus vhdl(const Options &options, Session &session)
{
    return requireChip(options, session) ? loadAndWrite(options, {{Output::Vhdl, options.outputDirectory}}, session)
                                         : kWrongUsage;
}

} // namespace veldmap::cli
