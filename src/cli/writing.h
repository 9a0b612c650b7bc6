#pragma once

#include "cli/options.h"
#include "outputs/outputs.h"

#include <vector>

namespace veldmap::cli {

struct Session;

/// One output that is asked for.
struct WantedOutput {
    Output output;
    QString directory; ///< made if need be; with both roots its directories chip and soft
};

/// The headers, and what \a options ask for beside them, all in \a directory.
std::vector<WantedOutput> wantedHeaders(const Options &options, const QString &directory);

/// Loads what \a options name and writes \a wanted of it: of the chip, or of every root. What can be written is, also
/// when something before it could not be. Tells at the end what became of the files.
ExitStatus loadAndWrite(const Options &options, const std::vector<WantedOutput> &wanted, Session &session);

/// The same, which makes and compares no texts where a BuildRecord shows that all files are up to date.
ExitStatus loadAndBuild(const Options &options, const std::vector<WantedOutput> &wanted, Session &session);

/// Whether \a options name a chip, of which there are VHDL packages; an error is told when they don't.
[[nodiscard]] bool requireChip(const Options &options, Session &session);

} // namespace veldmap::cli
