#pragma once

#include "files/generation_report.h"
#include "findings/finding.h"
#include "veldmap_export.h"

#include <functional>

class VMMemoryMap;

namespace veldmap {

/// What became of the packages of one chip.
struct VhdlReport : GenerationReport {
    QList<Finding> findings; ///< what no VHDL tool takes of them, by the rules of vhdl/rules.h
};

/// Writes the packages as VMMemoryMap::generateVHDL does, and tells what became of them and what VHDL will not take of
/// them. \a progress, if set, hears of each file before it is written.
VELDMAP_EXPORT VhdlReport writeVhdlPackages(const VMMemoryMap &map, const QString &path,
                                            const std::function<void(const QString &file)> &progress = {});

} // namespace veldmap
