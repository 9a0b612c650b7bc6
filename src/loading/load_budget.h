#pragma once

#include "findings/limits.h"

namespace veldmap {

/// What one load has used up of its limits. The loaders of all its files share one.
struct LoadBudget {
    /// How many elements the load may make by copying, by what its tags have declared so far.
    qint64 copiesAllowed() const { return limits::kCopiedElements + limits::kCopiesPerElement * declaredElements; }

    int includeDepth = 0;
    qint64 declaredElements = 0;
    qint64 copiedElements = 0;
};

} // namespace veldmap
