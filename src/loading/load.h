#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>

#include <memory>

class VMMemoryMap;
class VMRootArchive;

namespace veldmap {

class Sink;

/// Loads the description at \a path, with all that it includes, for the memory map \a map; \a chip only chooses the
/// word in the notes. \a sink hears all there is to tell, in the order in which it arises, on the caller's thread. Null
/// when \a path is empty or the load failed. The caller stores the result in the map. Global variables of a failed load
/// stay in the map.
///
/// With more than one of \a threads the others read files ahead; all have ended when it returns, and what is made and
/// heard is the same.
VELDMAP_EXPORT std::unique_ptr<VMRootArchive> loadRoot(VMMemoryMap &map, const QString &path, bool chip, Sink &sink,
                                                       int threads = 1);

} // namespace veldmap
