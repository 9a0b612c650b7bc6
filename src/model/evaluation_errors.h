#pragma once

#include "findings/finding.h"
#include <veldmap/veldmap_export.h>

namespace cexev {
class CExEv;
}

namespace veldmap {

/// Why \a expression has no value: what \a evaluator, which was given it with its literals in decimal, has recorded.
/// The finding has no place; its expression tells the character.
///
///     '0xFF+B' has no value: the name 'B' is not known, at character 6
VELDMAP_EXPORT Finding evaluationError(const QString &expression, const cexev::CExEv &evaluator);

} // namespace veldmap
