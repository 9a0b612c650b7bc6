#pragma once

#include "findings/rule.h"

/// What is told of accessors.
namespace veldmap::rules {

using namespace Qt::StringLiterals;

inline constexpr Rule accessorNameTaken = {
    "accessor-name-taken"_L1, Severity::Warning,
    u"Type '%1': registers and fields without accessors, as their names are taken: %2; the first is %3", u"rename it"};

} // namespace veldmap::rules
