#pragma once

#include "files/generation_report.h"
#include "veldmap_export.h"

#include <QString>

#include <functional>

class VMMemoryMap;

namespace veldmap {

/// Whether the standard output gets a line for each header that is skipped and the type of each instance pointer.
enum class HeaderTrace { None, StandardOutput };

/// Writes the headers as VMMemoryMap::generateCHeaders does, and tells what became of them. \a progress, if set, hears
/// of each file before it is written.
VELDMAP_EXPORT GenerationReport writeCHeaders(const VMMemoryMap &map, const QString &path, bool chip,
                                              HeaderTrace trace = HeaderTrace::None,
                                              const std::function<void(const QString &file)> &progress = {});

} // namespace veldmap
