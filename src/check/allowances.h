#pragma once

#include "check/lint_rule.h"
#include "findings/finding.h"
#include "xml/tag_document.h"

#include <QHash>

#include <span>
#include <utility>
#include <vector>

namespace veldmap {

/// What authors allow: a note "veldmap: allow ID ID" in front of a tag waives these rules for the tag and all in it,
/// in front of the root for the whole file.
class Allowances {
public:
    /// Reads the notes of \a document; \a sink hears of those that mean none of \a rules.
    void read(const TagDocument &document, const QString &file, std::span<const LintRule *const> rules, Sink &sink);
    bool allows(const Finding &finding) const;

private:
    using Position = std::pair<qint64, qint64>; // line and column
    /// A tag and all in it, by their places.
    struct Stretch {
        Position first;
        Position last;
    };
    using Stretches = std::vector<Stretch>; // in order, apart from each other
    class Marker;

    QHash<QString, QHash<const Rule *, Stretches>> m_ofFiles;
};

} // namespace veldmap
