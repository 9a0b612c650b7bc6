#pragma once

#include "cli/options.h"

#include <functional>

class VMMemoryMap;

namespace veldmap::cli {

struct Session;

/// Loads the roots that \a options name into the map of \a session, the chip first. The software is loaded too when the
/// chip fails, so that one run shows the messages of both. False when one of them did not load.
[[nodiscard]] bool loadDescriptions(const Options &options, Session &session);

/// Calls \a write for each root of \a map with the directory for its files: \a directory, or with both roots the
/// directories chip and soft in it. The second is tried also when the first fails; false when one did.
[[nodiscard]] bool writeEachRoot(const VMMemoryMap &map, const QString &directory,
                                 const std::function<bool(const QString &directory, bool chip)> &write);

} // namespace veldmap::cli
