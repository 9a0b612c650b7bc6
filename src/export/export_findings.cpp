#include "export/export_findings.h"

#include <algorithm>

namespace veldmap {

void ExportFindings::add(const Rule &rule, const SourcePlace &place, const QStringList &arguments)
{
    QStringList words = arguments;
    words << place.file.name() << QString::number(place.line) << QString::number(place.column);
    const Key key(&rule, words);
    if (m_known.contains(key))
        return;
    m_known.insert(key);
    auto row = std::ranges::find(m_rules, &rule, &OfRule::rule);
    if (row == m_rules.end())
        row = m_rules.insert(row, {&rule, {}});
    row->findings.append(Finding(rule, place.place(), arguments));
}

QList<ExportFindings::Told> ExportFindings::told(qsizetype most) const
{
    QList<Told> list;
    for (const OfRule &row : m_rules) {
        const qsizetype shown = most > 0 ? qMin(most, row.findings.size()) : row.findings.size();
        for (qsizetype at = 0; at < shown; ++at)
            list.append({row.findings[at]});
        list.last().more = row.findings.size() - shown;
    }
    return list;
}

bool ExportFindings::hasError() const
{
    return std::ranges::any_of(m_rules, [](const OfRule &row) { return row.rule->severity == Severity::Error; });
}

} // namespace veldmap
