#pragma once

#include "cli/options.h"

namespace veldmap::cli {

struct Session;

/// How much of the instances a command needs.
enum class InstanceParts {
    All,
    Outlines, ///< as LoadOptions::outlines has them
};

/// Loads the roots that \a options name into the map of \a session, the chip first. The software is loaded too when the
/// chip fails, so that one run shows the messages of both. False when one of them did not load.
[[nodiscard]] bool loadDescriptions(const Options &options, Session &session,
                                    InstanceParts instances = InstanceParts::All);

/// The same, and tells what lint finds unless \a options refuse it. False also when something found counts as an error.
[[nodiscard]] bool loadAndLint(const Options &options, Session &session, InstanceParts instances = InstanceParts::All);

} // namespace veldmap::cli
