#include "check/lint_choice.h"

#include "text/nearest_name.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Cuts \a front off \a word; false when \a word does not begin so.
bool cutFront(QStringView &word, QLatin1StringView front)
{
    const bool isThere = word.startsWith(front);
    if (isThere)
        word = word.sliced(front.size());
    return isThere;
}

/// The rule and place of findings that are told together.
struct RuleAtPlace {
    const Rule *rule;
    const Place *place;

    friend bool operator==(const RuleAtPlace &a, const RuleAtPlace &b)
    {
        return a.rule == b.rule && a.place->line == b.place->line && a.place->column == b.place->column &&
               a.place->file == b.place->file;
    }
    friend size_t qHash(const RuleAtPlace &key, size_t seed = 0)
    {
        return qHashMulti(seed, key.rule, key.place->line, key.place->column, key.place->file);
    }
};

constexpr qsizetype kTextsAtOnePlace = 3;

/// Which of the findings that are told have one rule and one place.
using ToldAtPlace = QHash<RuleAtPlace, QList<qsizetype>>;

} // namespace

LintChoice::LintChoice(std::span<const LintRule *const> rules)
{
    for (const LintRule *rule : rules)
        m_settings.insert(QString(rule->rule.id), {rule});
}

LintChoice::Setting *LintChoice::settingOf(QStringView id)
{
    const auto found = m_settings.find(id.toString());
    return found == m_settings.end() ? nullptr : &found.value();
}

bool LintChoice::take(QStringView word)
{
    if (Setting *setting = settingOf(word)) {
        setting->isOn = true;
        return true;
    }
    const bool isWanted = !cutFront(word, "no-"_L1);
    if (word == "all"_L1) {
        m_isAllOn = isWanted;
        return true;
    }
    if (word == "error"_L1) {
        m_isStrict = isWanted;
        return true;
    }
    const bool isOfErrors = cutFront(word, "error="_L1);
    Setting *setting = settingOf(word);
    if (!setting)
        return false;
    if (isOfErrors)
        setting->isError = isWanted;
    if (!isOfErrors || isWanted)
        setting->isOn = isWanted;
    return true;
}

bool LintChoice::isOn(const LintRule &rule) const
{
    const auto found = m_settings.constFind(rule.rule.id);
    if (found != m_settings.constEnd() && found->isOn)
        return *found->isOn;
    return m_isAllOn.value_or(rule.isOn);
}

std::optional<Severity> LintChoice::severityOf(const Finding &finding) const
{
    const auto setting = m_settings.constFind(finding.rule->id);
    if (setting != m_settings.constEnd()) {
        if (!isOn(*setting->rule))
            return {};
        if (setting->isError)
            return *setting->isError ? Severity::Error : qMin(finding.severity, Severity::Warning);
    }
    return m_isStrict && finding.severity == Severity::Warning ? Severity::Error : finding.severity;
}

QString LintChoice::nearestId(QStringView word) const
{
    QStringList ids = m_settings.keys();
    ids.sort();
    NearestName nearest(idOf(word));
    NearestName nearestToAll(word); // "no-acces" may mean no-access
    for (const QString &id : std::as_const(ids)) {
        nearest.offer(id);
        nearestToAll.offer(id);
    }
    return nearestToAll.name().isEmpty() ? nearest.name() : nearestToAll.name();
}

QStringView LintChoice::idOf(QStringView word)
{
    cutFront(word, "no-"_L1);
    cutFront(word, "error="_L1);
    return word;
}

LintSelection selectFindings(const QList<Finding> &findings, const LintChoice &choice, qsizetype most)
{
    LintSelection selection;
    ToldAtPlace toldAtPlace;
    qsizetype count = 0; // of those that may be too many
    for (const Finding &finding : findings) {
        const std::optional<Severity> severity = choice.severityOf(finding);
        if (!severity)
            continue;
        // What is said of a file as a whole, or of no file, is told by itself.
        if (finding.place.line > 0) {
            const QList<qsizetype> here = toldAtPlace.value({finding.rule, &finding.place});
            const bool isRepeated = std::ranges::any_of(
                here, [&](qsizetype told) { return selection.told.at(told).finding.arguments == finding.arguments; });
            if (isRepeated || here.size() == kTextsAtOnePlace) {
                ++selection.told[here.last()].more;
                continue;
            }
        }
        if (*severity != Severity::Error && most > 0 && count++ >= most) {
            ++selection.hidden;
            continue;
        }
        if (finding.place.line > 0)
            toldAtPlace[{finding.rule, &finding.place}] += selection.told.size();
        selection.told.append({finding});
        selection.told.last().finding.severity = *severity;
    }
    return selection;
}

} // namespace veldmap
