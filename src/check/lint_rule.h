#pragma once

#include "findings/rule.h"

namespace veldmap {

/// A rule of lint: what an author has most likely not meant. It says nothing of a description that is merely unusual.
struct LintRule {
    Rule rule;        ///< its severity is the one that holds unless the user asks for another
    bool isOn = true; ///< told unless the user says otherwise; off for what a good description often has
};

} // namespace veldmap
