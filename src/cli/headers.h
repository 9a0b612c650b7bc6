#pragma once

#include <QString>

namespace veldmap::cli {

struct Session;

/// Writes the headers of every root of \a session below \a directory, with both roots below its directories chip and
/// soft. False, with an error told for each, when a file could not be written.
[[nodiscard]] bool writeAllHeaders(Session &session, const QString &directory);

} // namespace veldmap::cli
