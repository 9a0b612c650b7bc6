#pragma once

#include "findings/rule.h"

/// What is told of accessors.
namespace veldmap::rules {

using namespace Qt::StringLiterals;

inline constexpr Rule accessorNameTaken = {
    "accessor-name-taken"_L1, Severity::Warning,
    u"Type '%1': %2 %3 without accessors, as another has their names; the first is %4", u"rename it"};

} // namespace veldmap::rules
