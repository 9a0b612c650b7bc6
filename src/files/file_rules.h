#pragma once

#include "findings/rule.h"

/// What is told of writing any file.
namespace veldmap::file_rules {

using namespace Qt::StringLiterals;

inline constexpr Rule kInPlace = {
    "file-written-in-place"_L1, Severity::Warning,
    u"%1 is written over the old file, not in one step, since its directory takes no other: %2"};

} // namespace veldmap::file_rules
