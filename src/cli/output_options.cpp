#include "cli/output_options.h"

#include "cli/messages.h"
#include "cli/program_rules.h"

#include <CLI/CLI.hpp>

#include <QFileInfo>

namespace veldmap::cli {

void addOutputOptions(CLI::App &command, OutputArguments &arguments)
{
    const std::string group = "Build systems";
    CLI::Option *base =
        command
            .add_option("--base", arguments.base, "directory that the names of files start from, not that of the root")
            ->type_name("DIR")
            ->group(group);
    command
        .add_flag("--common-base", arguments.hasCommonBase,
                  "they start from the lowest directory above all that is read")
        ->excludes(base)
        ->group(group);
    command
        .add_option("--depfile", arguments.depfile,
                    "tell in FILE, as make and ninja read it, what was read and what was looked for")
        ->type_name("FILE")
        ->group(group);
    command.add_option("--depfile-target", arguments.target, "what depends on it, if not the files that are written")
        ->type_name("NAME")
        ->group(group);
    command
        .add_option("--list", arguments.list, "tell in FILE, or with - on the standard output, which files are written")
        ->type_name("FILE")
        ->group(group);
    command.add_flag("--dry-run", arguments.isDryRun, "write no files but those of --depfile and --list")->group(group);
}

bool takeOutputOptions(const OutputArguments &arguments, OutputSettings &settings, Messages &messages)
{
    settings.base = QString::fromStdString(arguments.base);
    settings.hasCommonBase = arguments.hasCommonBase;
    settings.isDryRun = arguments.isDryRun;
    settings.list = QString::fromStdString(arguments.list);
    settings.depfile = QString::fromStdString(arguments.depfile);
    settings.target = QString::fromStdString(arguments.target);
    if (!settings.base.isEmpty() && !QFileInfo(settings.base).isDir()) {
        messages.tell(rules::kNoBase, {settings.base});
        return false;
    }
    return true;
}

} // namespace veldmap::cli
