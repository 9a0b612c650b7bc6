#pragma once

#include "import/arrangement.h"

namespace veldmap {

/// The registers of one peripheral, planned.
struct PlannedRegisters {
    /// What stands at one place, under one name: the registers first, then views that lie over them.
    struct View {
        QString name; ///< of a view, empty for the registers themselves
        std::vector<plan::Member> members;
        QString comment;
        QString path; ///< of what lies over, in the source
        QString over; ///< the path of what it lies over
        chip::At at;
    };
    std::vector<View> views; ///< none when there is nothing to be placed
};

/// Plans \a parts of the peripheral that messages call \a path. \a told hears what was changed and left out; of
/// \a budget that many more members may be made.
PlannedRegisters planRegisters(const std::vector<chip::Part> &parts, const QString &path, Told &told, qint64 &budget);

} // namespace veldmap
