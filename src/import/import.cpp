#include "import/import.h"

#include "findings/finding.h"
#include "import/kept_additions.h"
#include "import/source_format.h"

#include <algorithm>
#include <map>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Findings of one rule.
struct Group {
    const Rule *rule;
    std::vector<const Finding *> findings;
};

/// The findings by rule, the graver ones first.
std::vector<Group> groupsOf(const QList<Finding> &findings)
{
    std::map<QLatin1StringView, Group> groups;
    for (const Finding &finding : findings) {
        Group &group = groups[finding.rule->id];
        group.rule = finding.rule;
        group.findings.push_back(&finding);
    }
    std::vector<Group> sorted;
    for (auto &[id, group] : groups)
        sorted.push_back(std::move(group));
    std::ranges::stable_sort(sorted, std::greater(), [](const Group &group) { return group.rule->severity; });
    return sorted;
}

/// The words of a rule about anything: "its access is '...', of which '...' is left".
QString wordsOf(const Rule &rule)
{
    QString words = wordsWithoutArguments(rule);
    if (words.startsWith("...: "_L1))
        words = words.sliced(5);
    if (words.endsWith(u'.') && !words.endsWith("..."_L1))
        words.chop(1);
    return words;
}

/// \a text for a line of a page.
QString pageText(QString text)
{
    for (const QChar c : u"\\`*_<|[]"_s)
        text.replace(c, u'\\' + QString(c));
    return text.replace(u'\n', u' ');
}

} // namespace

bool isImportable(const QByteArray &bytes)
{
    return sourceFormatOf(bytes) != nullptr;
}

std::optional<Import> importDescription(const QByteArray &bytes, const QString &file, Sink &sink)
{
    FindingList told;
    const std::unique_ptr<chip::Device> device = readDevice(bytes, file, told);
    if (!device) {
        for (const Finding &finding : std::as_const(told.findings)) {
            if (finding.severity == Severity::Error)
                sink.take(finding);
        }
        return std::nullopt;
    }
    Import import;
    import.device = std::move(*device);
    import.files = writeDescription(import.device, told);
    import.findings = std::move(told.findings);
    std::ranges::stable_sort(import.findings, {}, [](const Finding &finding) {
        return std::pair(finding.place.line, finding.place.column);
    });
    return import;
}

MadeDescription madeDescription(const Import &import)
{
    constexpr qsizetype kHeadLines = 3; // the declaration, perhaps a note, and the archive
    MadeDescription made;
    for (const WrittenFile &file : import.files) {
        MadeDescription::File &to = made.files.emplace_back();
        to.path = file.path;
        to.text = file.text;
        // A line that tells of nothing in the source belongs to what stands above it, the first ones to what comes.
        chip::At last = import.device.at;
        const auto first = std::ranges::find_if(file.sources, [](const chip::At &at) { return at.line > 0; });
        if (first != file.sources.end())
            last = *first;
        for (qsizetype at = 0; at < file.sources.size(); ++at) {
            if (file.sources[at].line > 0)
                last = file.sources[at];
            // Archives that tell of the same place are told apart, since one tag can't be two archives.
            const bool isArchive = at > 0 && at < kHeadLines;
            to.lines.append({last.line, last.column + (isArchive ? int(made.files.size()) - 1 : 0)});
        }
    }
    return made;
}

QString importSummary(const Import &import)
{
    QString table;
    for (const Group &group : groupsOf(import.findings)) {
        table += QString::number(group.findings.size()).rightJustified(6) + u"  "_s +
                 QString(group.rule->id).leftJustified(24) + wordsOf(*group.rule) + u'\n';
    }
    return table;
}

QString importReport(const Import &import)
{
    QString page = u"# Import of "_s + pageText(import.device.name) + u"\n\n"_s;
    const std::vector<Group> groups = groupsOf(import.findings);
    if (groups.empty())
        return page + u"All that the source says is in this description.\n\n"_s + madeTags(import);
    page += u"What was changed, approximated or left out.\n\n| | | |\n|---:|---|---|\n"_s;
    for (const Group &group : groups)
        page += u"| %1 | [%2](#%2) | %3 |\n"_s.arg(QString::number(group.findings.size()), QString(group.rule->id),
                                                   pageText(wordsOf(*group.rule)));
    for (const Group &group : groups) {
        page += u"\n## "_s + QString(group.rule->id) + u"\n\n"_s;
        for (const Finding *finding : group.findings)
            page += u"- "_s + pageText(finding->text()) + u'\n';
    }
    return page + u'\n' + madeTags(import);
}

} // namespace veldmap
