#pragma once

#include "model/archive.h"

#include <QSet>

#include <vector>

namespace veldmap {

/// The global variables of the memory map that \a archive hangs on, or null.
const VMVariableManager *globalVariablesOf(const VMXMLArchive &archive);

/// Walks \a top and the archives that it includes, each archive once, so that the includes of an archive come before
/// the archive itself. With \a lastFirst the includes are taken from the last to the first. Ends at the first archive
/// for which \a visit holds. An archive that is still being walked is skipped, which keeps circular includes finite;
/// one that was walked in vain would be so again, so one without includes may be visited more than once.
template <typename Visit>
void walkIncludes(const VMXMLArchive &top, bool lastFirst, const Visit &visit)
{
    struct Step {
        const VMXMLArchive *archive;
        qsizetype taken = 0;
    };
    QSet<const VMXMLArchive *> walked = {&top};
    std::vector<Step> way = {{&top}};
    while (!way.empty()) {
        Step &step = way.back();
        const auto &includes = step.archive->includedArchives;
        if (step.taken == includes.size()) {
            if (visit(*step.archive))
                return;
            way.pop_back();
            continue;
        }
        const VMXMLArchive *next = includes[lastFirst ? includes.size() - 1 - step.taken : step.taken];
        ++step.taken;
        if (next->includedArchives.isEmpty()) {
            if (visit(*next))
                return;
        } else if (!walked.contains(next)) {
            walked.insert(next);
            way.push_back({next});
        }
    }
}

} // namespace veldmap
