#pragma once

#include "check/allowances.h"
#include "check/lint_rule.h"
#include "check/readable_findings.h"
#include "check/unused_names.h"
#include "findings/finding.h"
#include "xml/document_listener.h"

#include <veldmap/veldmap_export.h>

#include <QHash>
#include <QSet>

#include <functional>
#include <span>
#include <utility>

class VMMemoryMap;

namespace veldmap {

/// All rules of lint, group by group. Each is a row of a table in this room; docs/rules.md tells of each.
VELDMAP_EXPORT std::span<const LintRule *const> lintRules();

/// Finds what is most likely not meant in descriptions that load.
///
/// It listens to a load for what only the documents show (misspelt attributes, comments that allow something), and
/// walks the finished tree for the rest. Every finding has the place of the tag concerned.
class VELDMAP_EXPORT Lint final : public DocumentListener {
public:
    /// Rules for which \a isOn does not hold may be left out.
    explicit Lint(const std::function<bool(const LintRule &)> &isOn = [](const LintRule &) { return true; });

    std::unique_ptr<DocumentStudy> study(const TagDocument &document) const override;
    void onDocument(const TagDocument &document, const QString &file, const DocumentStudy *study) override;
    void onInclude(const Place &include, const QString &file) override;

    /// Tells \a sink all findings, with the severities of their rules, also those of rules that are off: file by file
    /// as they were read, from top to bottom. Without a root of \a map, because it failed to load or is not there, only
    /// what its documents show is told. What a comment "veldmap: allow ID" in front of a tag allows is left out.
    /// It looks with up to \a threads threads, which makes no difference to what is told.
    void report(const VMMemoryMap &map, Sink &sink, int threads = 1) const;

private:
    QHash<QString, qsizetype> m_files;                         ///< with their order, in which they were read
    QSet<std::pair<QString, std::pair<int, int>>> m_documents; ///< that were seen: the file, and where the root stands
    ReadableFindings m_ofDocuments;
    Allowances m_allowances;
    bool m_looksForUnused;
    UnusedNames m_unused;
};

} // namespace veldmap
