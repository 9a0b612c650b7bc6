#pragma once

#include "import/plan.h"
#include "import/told.h"

namespace veldmap {

/// \a members with those of equal make that are numbered from 0 as arrays: CH0_A, CH0_B, CH1_A, CH1_B are CH_A and
/// CH_B, which arranged() makes a structure of.
std::vector<plan::Member> gathered(std::vector<plan::Member> members);

/// Members of one structure as they can stand one behind the other.
struct Arrangement {
    /// Each is in the order of offsets, and nothing in it overlaps. The first one is what stands in the structure; the
    /// others lie over it.
    std::vector<std::vector<plan::Member>> views;
    quint64 bytes = 0; ///< of the first view
    int alignment = 1; ///< of the first view
};

/// Arranges \a members, which may lie over each other. Arrays with gaps become structures. What can't stand as it is is
/// taken apart or left out, which \a told hears; of \a budget that many more may be made.
Arrangement arranged(std::vector<plan::Member> members, Told &told, qint64 &budget);

/// What \a members say that was gathered or made a structure, told in their order.
void tellGathered(const std::vector<plan::Member> &members, Told &told);

} // namespace veldmap
