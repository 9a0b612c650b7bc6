#pragma once

#include "findings/finding.h"

class VMMemoryMap;

namespace veldmap {

/// Tells what is wrong with the trees of \a map, which are finished: registers, structures, the memory map, and the
/// names of what is generated. What is told, and its order, is the same for every number of \a threads.
void checkTree(const VMMemoryMap &map, Sink &sink, int threads);

} // namespace veldmap
