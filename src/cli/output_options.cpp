#include "cli/output_options.h"

#include "cli/messages.h"
#include "cli/program_rules.h"
#include "findings/limits.h"
#include "text/literals.h"

#include <CLI/CLI.hpp>

#include <QFileInfo>

#include <limits>

namespace veldmap::cli {

namespace {

/// The bytes that \a text means: a number, perhaps with K, M or G behind it; nothing when it means none.
std::optional<qint64> bytesOf(const QString &text)
{
    constexpr QStringView kSuffixes = u"KMG";
    const qsizetype suffix = text.isEmpty() ? -1 : kSuffixes.indexOf(text.back().toUpper());
    const qint64 unit = qint64(1) << (10 * (suffix + 1));
    const std::optional<qint64> number = numberOf(suffix < 0 ? text : text.chopped(1));
    if (!number || *number < 1)
        return {};
    return *number > std::numeric_limits<qint64>::max() / unit ? std::numeric_limits<qint64>::max() : *number * unit;
}

} // namespace

void addMostOutput(CLI::App &command, OutputArguments &arguments)
{
    command
        .add_option("--max-output", arguments.mostBytes,
                    "write or print no more than SIZE bytes, 4G if not given; a number, also with K, M or G behind it")
        ->type_name("SIZE");
}

void addOutputOptions(CLI::App &command, OutputArguments &arguments)
{
    addMostOutput(command, arguments);
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
    settings.mostBytes = limits::kOutputBytes;
    if (arguments.mostBytes) {
        const QString text = QString::fromStdString(*arguments.mostBytes);
        const std::optional<qint64> bytes = bytesOf(text);
        if (!bytes) {
            messages.tell(rules::kNoSize, {text});
            return false;
        }
        settings.mostBytes = *bytes;
    }
    if (!settings.base.isEmpty() && !QFileInfo(settings.base).isDir()) {
        messages.tell(rules::kNoBase, {settings.base});
        return false;
    }
    return true;
}

} // namespace veldmap::cli
