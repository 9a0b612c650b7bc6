#pragma once

#include "cli/options.h"

/// One function for each command: it loads what it needs, calls one operation of the library, and reports.
namespace veldmap::cli {

struct Session;

ExitStatus check(const Options &options, Session &session);
ExitStatus headers(const Options &options, Session &session);
ExitStatus docs(const Options &options, Session &session);
ExitStatus site(const Options &options, Session &session);
ExitStatus vhdl(const Options &options, Session &session);
ExitStatus build(const Options &options, Session &session);
ExitStatus tree(const Options &options, Session &session);
ExitStatus show(const Options &options, Session &session);
ExitStatus regs(const Options &options, Session &session);
ExitStatus write(const Options &options, Session &session);
ExitStatus complete(const Options &options, Session &session);
ExitStatus eval(const Options &options, Session &session);
ExitStatus console(const Options &options, Session &session);
ExitStatus exportMap(const Options &options, Session &session);
ExitStatus find(const Options &options, Session &session);
ExitStatus listRules(const Options &options, Session &session);
ExitStatus writeNew(const Options &options, Session &session);
ExitStatus importFile(const Options &options, Session &session);
ExitStatus encrypt(const Options &options, Session &session);

} // namespace veldmap::cli
