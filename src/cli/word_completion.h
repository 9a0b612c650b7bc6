#pragma once

#include "cli/options.h"

#include <string>
#include <vector>

namespace CLI {
class App;
} // namespace CLI

namespace veldmap::cli {

/// Prints what may stand in the place of the last of \a words, the words of a command line behind the program's name;
/// it may be begun or empty. For shells: a candidate a line, behind it a tab and what it means. One line ":file",
/// ":directory" or ":description" stands for the names of such.
ExitStatus completeWords(const CLI::App &app, const std::vector<std::string> &words, Session &session);

} // namespace veldmap::cli
