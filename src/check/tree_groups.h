#pragma once

#include "findings/finding.h"

class VMMemoryMap;
class VMRootArchive;

/// The groups of rules of checkTree(); rows in tree_rules.h. Each takes time in proportion to what the description
/// declares: what a template holds is checked there, not in each copy.
namespace veldmap {

void checkStructures(const VMRootArchive &root, Sink &sink);
void checkUnusedTypes(const VMMemoryMap &map, Sink &sink);
void checkGeneratedNames(const VMRootArchive &root, Sink &sink);
void checkIncludes(const VMRootArchive &root, Sink &sink);
void checkRegisters(const VMRootArchive &root, Sink &sink);
void checkMemoryMap(const VMMemoryMap &map, Sink &sink);

} // namespace veldmap
