#include "check/allowances.h"

#include "check/document_rules.h"
#include "check/tag_check.h"
#include "text/nearest_name.h"
#include "xml/tag_attributes.h"

#include <algorithm>
#include <limits>
#include <vector>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr QLatin1StringView kMark = "veldmap:"_L1;

/// The words of a note to veldmap; none of any other.
std::vector<QStringView> wordsOf(QStringView note)
{
    const QStringView text = note.trimmed();
    if (!text.startsWith(kMark))
        return {};
    std::vector<QStringView> words;
    qsizetype begin = kMark.size();
    for (qsizetype at = begin; at <= text.size(); ++at) {
        if (at < text.size() && !text[at].isSpace() && text[at] != u',')
            continue;
        if (at > begin)
            words.push_back(text.sliced(begin, at - begin));
        begin = at + 1;
    }
    if (words.empty())
        words.emplace_back(u""); // which names no rule
    return words;
}

QString complaintOf(QStringView id, std::span<const LintRule *const> rules)
{
    NearestName nearest(id);
    for (const LintRule *rule : rules)
        nearest.offer(rule->rule.id);
    const QString complaint = u"'%1' is no rule of lint"_s.arg(shownText(id));
    return nearest.name().isEmpty() ? complaint : complaint + u"; did you mean '%1'?"_s.arg(nearest.name());
}

} // namespace

/// Finds out where the tags end that notes stand in front of.
class Allowances::Marker {
public:
    using RulesOfTags = QHash<int, QList<const Rule *>>; // by the number of the tag

    Marker(const RulesOfTags &rulesOfTags, QHash<const Rule *, Stretches> &stretches)
        : m_rulesOfTags(rulesOfTags), m_stretches(stretches)
    {
    }

    void markRoot(const Tag &root)
    {
        mark(root);
        for (const Rule *rule : m_rulesOfTags.value(root.number())) // findings of the file as a whole are in line 0
            m_stretches[rule].front() = {{0, 0}, kEnd};
    }

private:
    static constexpr Position kEnd = {std::numeric_limits<qint64>::max(), 0};

    void mark(const Tag &tag)
    {
        m_last = {tag.lineNumber(), tag.columnNumber()};
        std::vector<const Rule *> begun;
        if (const auto rules = m_rulesOfTags.constFind(tag.number()); rules != m_rulesOfTags.cend()) {
            for (const Rule *rule : *rules) {
                Stretches &stretches = m_stretches[rule];
                if (!stretches.empty() && stretches.back().last == kEnd) // a tag around this one allows it already
                    continue;
                stretches.push_back({m_last, kEnd});
                begun.push_back(rule);
            }
        }
        for (const Tag &child : ChildTags(tag))
            mark(child);
        for (const Rule *rule : begun)
            m_stretches[rule].back().last = m_last;
    }

    const RulesOfTags &m_rulesOfTags;
    QHash<const Rule *, Stretches> &m_stretches;
    Position m_last;
};

void Allowances::read(const TagDocument &document, const QString &file, std::span<const LintRule *const> rules,
                      Sink &sink)
{
    Marker::RulesOfTags rulesOfTags;
    for (const TagDocument::Note &note : document.notes()) {
        const std::vector<QStringView> words = wordsOf(note.text);
        if (words.empty())
            continue;
        const auto refuse = [&](const QString &reason) {
            sink.take(Finding(rules::unknownWaiver.rule, Place{file, note.line, note.column, 0}, {reason}));
        };
        if (words.front() != "allow"_L1 || words.size() == 1) {
            refuse(u"it is not of the form 'veldmap: allow ID'"_s);
            continue;
        }
        if (note.tag < 0) {
            refuse(u"no tag follows it"_s);
            continue;
        }
        for (const QStringView word : std::span(words).subspan(1)) {
            const auto known = std::ranges::find_if(rules, [&](const LintRule *rule) { return rule->rule.id == word; });
            if (known != rules.end())
                rulesOfTags[note.tag] += &(*known)->rule;
            else
                refuse(complaintOf(word, rules));
        }
    }
    if (!rulesOfTags.isEmpty())
        Marker(rulesOfTags, m_ofFiles[file]).markRoot(document.root());
}

bool Allowances::allows(const Finding &finding) const
{
    const auto file = m_ofFiles.constFind(finding.place.file);
    if (file == m_ofFiles.cend())
        return false;
    const auto stretches = file->constFind(finding.rule);
    if (stretches == file->cend())
        return false;
    const Position at = {finding.place.line, finding.place.column};
    const auto next = std::ranges::upper_bound(*stretches, at, {}, &Stretch::first);
    return next != stretches->begin() && at <= std::prev(next)->last;
}

} // namespace veldmap
