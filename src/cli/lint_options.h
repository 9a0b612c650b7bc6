#pragma once

#include "check/lint_choice.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
} // namespace CLI

namespace veldmap::cli {

class Messages;

/// What the command line says of lint.
struct LintOptions {
    bool isOn = true;
    LintChoice choice;
    std::optional<qsizetype> most; ///< findings that are told in all, 0 for any number of them
};

/// The same as CLI11 reads it.
struct LintArguments {
    bool isRefused = false;
    bool isStrict = false;
    std::vector<std::string> words;    ///< behind -W
    std::vector<std::string> unwanted; ///< behind --no-warn
    std::optional<std::string> most;
};

void addLintOptions(CLI::App &command, LintArguments &arguments);

/// Reads \a arguments into \a options; false, with an error told, when they name what is not there.
[[nodiscard]] bool takeLintOptions(const LintArguments &arguments, LintOptions &options, Messages &messages);

/// The words of a command line, each @FILE replaced by the words in that file: an option a line, with its value behind
/// a blank or "="; "#" begins a comment. Nothing, with an error told, when one can't be read.
[[nodiscard]] std::optional<std::vector<std::string>> expandOptionFiles(const std::vector<std::string> &words,
                                                                        Messages &messages);

} // namespace veldmap::cli
