#pragma once

#include "findings/finding.h"
#include <veldmap/veldmap_export.h>

namespace veldmap {

/// What is said of \a expression, which has no value because of the evaluator's \a error, a CExEv::kError... code.
VELDMAP_EXPORT Finding evaluationError(const QString &expression, int error);

} // namespace veldmap
