#pragma once

#include "findings/finding.h"
#include <veldmap/veldmap_export.h>

namespace cexev {
class CExEv;
}

namespace veldmap {

/// What is said of \a expression, which has no value because of the evaluator's \a error, a CExEv::kError... code.
VELDMAP_EXPORT Finding evaluationError(const QString &expression, int error);

/// The same of the error that \a evaluator has recorded, with the place in \a expression.
Finding evaluationError(const QString &expression, const cexev::CExEv &evaluator);

} // namespace veldmap
