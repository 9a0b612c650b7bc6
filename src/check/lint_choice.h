#pragma once

#include "check/lint.h"

#include <optional>

namespace veldmap {

/// Which rules of lint a user wants to hear, and how grave each is to him: what the words behind -W say.
class VELDMAP_EXPORT LintChoice {
public:
    explicit LintChoice(std::span<const LintRule *const> rules = lintRules());

    /// Takes one word. False when it names no rule.
    ///
    ///     ID, no-ID                 turns a rule on or off; an ID that itself begins with "no-" is that rule
    ///     error=ID, no-error=ID     makes an error of what it finds, which turns it on, or a warning again
    ///     all, no-all               turns all rules on or off
    ///     error, no-error           makes an error of every warning or of none, also of those that loading gives
    ///
    /// What is said of one rule holds before what is said of all; else the later word does.
    [[nodiscard]] bool take(QStringView word);

    /// Whether every warning counts as an error.
    bool isStrict() const { return m_isStrict; }
    /// What a finding of lint counts as; nothing when it is not to be told.
    std::optional<Severity> severityOf(const Finding &finding) const;
    bool isOn(const LintRule &rule) const;

    /// The ID that most likely was meant with a word that names no rule; empty when none is like it.
    QString nearestId(QStringView word) const;
    /// \a word without what may stand in front of an ID.
    static QStringView idOf(QStringView word);

private:
    struct Setting {
        const LintRule *rule;
        std::optional<bool> isOn = {};
        std::optional<bool> isError = {};
    };
    Setting *settingOf(QStringView id);

    QHash<QString, Setting> m_settings; ///< by ID
    std::optional<bool> m_isAllOn;
    bool m_isStrict = false;
};

/// What is told of findings of lint.
struct LintSelection {
    struct Told {
        Finding finding;
        qsizetype more = 0; ///< further ones of its rule at its place, which are not told by themselves
    };
    QList<Told> told;     ///< in the order of the findings, with the severities of the choice
    qsizetype hidden = 0; ///< how many are left out because they are too many
};

/// What to tell of \a findings after \a choice: of one rule at one place the first three that say different things, and
/// no more than \a most in all, where 0 means all. Errors are not counted and never left out.
VELDMAP_EXPORT LintSelection selectFindings(const QList<Finding> &findings, const LintChoice &choice, qsizetype most);

} // namespace veldmap
