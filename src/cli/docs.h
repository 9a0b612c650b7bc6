#pragma once

#include <QString>

namespace veldmap::cli {

struct Session;

/// Writes the documentation site of every root of \a session into \a directory, with both roots into its directories
/// chip and soft. False, with an error told for each, when a file could not be written.
[[nodiscard]] bool writeSites(Session &session, const QString &directory);

} // namespace veldmap::cli
