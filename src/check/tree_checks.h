#pragma once

#include "findings/finding.h"

class VMMemoryMap;

namespace veldmap {

/// Tells what is wrong with the trees of \a map, which are finished: registers, structures, the memory map, and the
/// names of what is generated.
void checkTree(const VMMemoryMap &map, Sink &sink);

} // namespace veldmap
