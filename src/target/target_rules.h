#pragma once

#include "findings/rule.h"

/// What can go wrong between a target's memory and us.
namespace veldmap::target_rules {

using namespace Qt::StringLiterals;

inline constexpr Rule kUnreadable = {"image-unreadable"_L1, Severity::Error, u"%1 can't be read: %2"};
inline constexpr Rule kUnwritable = {"image-unwritable"_L1, Severity::Error, u"%1 can't be written: %2"};
inline constexpr Rule kNoTarget = {"no-target"_L1, Severity::Error, u"'%1' is no target: %2."};
inline constexpr Rule kUnreachable = {"target-unreachable"_L1, Severity::Error, u"%1 can't be reached: %2."};

} // namespace veldmap::target_rules
