#pragma once

#include "cli/options.h"
#include "outputs/outputs.h"

namespace veldmap::cli {

struct Session;

/// Writes \a output of what \a session has loaded into \a directory, which is made if need be: that of the chip, or of
/// every root, with both roots into its directories chip and soft. What can be written is, also when something before
/// it could not be. False, with errors told, when not all could be.
[[nodiscard]] bool writeFiles(Session &session, Output output, const QString &directory, const Options &options);

/// Writes the headers, and those beside them that \a options ask for, in the same way.
[[nodiscard]] bool writeHeaders(Session &session, const QString &directory, const Options &options);

/// Loads what \a options name and writes \a output of it.
ExitStatus loadAndWrite(const Options &options, Output output, Session &session);

/// Whether \a options name a chip, of which there are VHDL packages; an error is told when they don't.
[[nodiscard]] bool requireChip(const Options &options, Session &session);

} // namespace veldmap::cli
