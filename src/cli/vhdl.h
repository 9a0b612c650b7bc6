#pragma once

#include <QString>

namespace veldmap::cli {

class Messages;
struct Options;
struct Session;

/// Whether \a options name a chip, of which there are packages; an error is told when they don't.
[[nodiscard]] bool requireChip(const Options &options, Messages &messages);

/// Writes the packages of the chip of \a session below \a directory, and tells what VHDL will not take of them; false,
/// with errors told, when a file could not be written.
[[nodiscard]] bool writePackages(Session &session, const QString &directory);

} // namespace veldmap::cli
