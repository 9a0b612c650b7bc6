#pragma once

#include "findings/finding.h"
#include "model/source_place.h"
#include <veldmap/veldmap_export.h>

#include <QHash>
#include <QSet>

#include <utility>
#include <vector>

namespace veldmap {

/// What an export has found that its format can't say. The same element comes along in each instance of its type, but
/// is told once; of many elements of a large chip with which the same is wrong, the first few stand for all.
class VELDMAP_EXPORT ExportFindings {
public:
    void add(const Rule &rule, const SourcePlace &place, const QStringList &arguments);

    /// One that is told, and how many more of its rule are not.
    struct Told {
        Finding finding;
        qsizetype more = 0; ///< behind the last one of a rule that is told
    };
    /// The findings, in the order in which they arose, but those of one rule together: \a most of each, 0 for all.
    QList<Told> told(qsizetype most) const;
    bool hasError() const;

private:
    struct OfRule {
        const Rule *rule;
        QList<Finding> findings;
    };
    using Key = std::pair<const Rule *, QStringList>; // rule, place and arguments

    std::vector<OfRule> m_rules; // in the order in which they came up
    QSet<Key> m_known;
};

} // namespace veldmap
