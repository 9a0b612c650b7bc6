#pragma once

#include "files/generation_report.h"
#include "veldmap_export.h"

#include <functional>

class VMMemoryMap;

namespace veldmap {

/// Lines of a package that no VHDL tool takes: all of one kind in one module, or among the variables of one file.
struct VhdlFinding {
    QString file; ///< of the description
    QString text;
};

/// What became of the packages of one chip.
struct VhdlReport : GenerationReport {
    QList<VhdlFinding> findings;
};

/// Writes the packages as VMMemoryMap::generateVHDL does, and tells what became of them and what VHDL will not take of
/// them. \a progress, if set, hears of each file before it is written.
VELDMAP_EXPORT VhdlReport writeVhdlPackages(const VMMemoryMap &map, const QString &path,
                                            const std::function<void(const QString &file)> &progress = {});

} // namespace veldmap
