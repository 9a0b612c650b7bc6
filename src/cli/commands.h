#pragma once

#include "cli/options.h"

/// One function for each command: it loads what it needs, calls one operation of the library, and reports.
namespace veldmap::cli {

ExitStatus check(const Options &options);
ExitStatus headers(const Options &options);
ExitStatus docs(const Options &options);
ExitStatus vhdl(const Options &options);
ExitStatus build(const Options &options);
ExitStatus tree(const Options &options);
ExitStatus show(const Options &options);
ExitStatus write(const Options &options);
ExitStatus complete(const Options &options);
ExitStatus eval(const Options &options);
ExitStatus encrypt(const Options &options);

} // namespace veldmap::cli
