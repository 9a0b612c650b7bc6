#pragma once

#include <QString>

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace veldmap::cli {

class Messages;

/// What the command line says of writing files, as CLI11 reads it.
struct OutputArguments {
    std::string base;
    bool hasCommonBase = false;
    bool isDryRun = false;
    std::string list;
    std::string depfile;
    std::string target;
    std::optional<std::string> mostBytes;
};

/// What the command line says of writing files.
struct OutputSettings {
    QString base;               ///< where relative names start; empty for the directories of the roots
    bool hasCommonBase = false; ///< they start at the lowest directory that all files of a root lie below
    bool isDryRun = false;      ///< nothing is made but the list and the depfile
    QString list;               ///< file for the names of what is written, "-" for the standard output, empty for none
    QString depfile;            ///< file for the names of what was read, empty for none
    qint64 mostBytes = 0;       ///< of all that a run writes, or prints as its result
    QString target;             ///< what the depfile says depends on them; empty for the files that are written
};

/// The option of all commands that write or print what is made of a description.
void addMostOutput(CLI::App &command, OutputArguments &arguments);

/// The options that the commands have which write files, that one among them.
void addOutputOptions(CLI::App &command, OutputArguments &arguments);

/// Takes \a arguments over into \a settings; false, with an error told, when they make no sense.
[[nodiscard]] bool takeOutputOptions(const OutputArguments &arguments, OutputSettings &settings, Messages &messages);

} // namespace veldmap::cli
