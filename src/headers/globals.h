#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>

class VMVariableManager;

namespace veldmap {

// The headers of the global variables of a memory map, which the headers of its files use and don't define. Of several
// variables that are one macro the last one counts; those in front of it stand commented out.

VELDMAP_EXPORT QString globalsHeader(const VMVariableManager &globals);
VELDMAP_EXPORT QString globalsAssemblyHeader(const VMVariableManager &globals);

} // namespace veldmap
