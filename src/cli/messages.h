#pragma once

#include "cli/explanations.h"
#include "findings/finding_formats.h"

#include <QElapsedTimer>
#include <QString>

#include <cstdio>

namespace veldmap::cli {

/// How much is told: errors only, warnings too, or the log as well.
enum class Verbosity { Quiet, Normal, Verbose };

/// Everything that the program tells its user beside its results, on the standard error if no format asks for more.
///
/// A finding is printed as compilers do, "FILE:LINE:COLUMN: error: TEXT"; one without a place as "error: TEXT". Behind
/// what lint finds stands the rule, " [ID]". Notes are what a long job is doing at the moment.
class Messages final : public Sink {
public:
    Messages();

    void setVerbosity(Verbosity verbosity) { m_verbosity = verbosity; }
    /// Makes an error of every warning that follows.
    void setStrict(bool isStrict) { m_isStrict = isStrict; }

    /// Tells from now on more than a host's callbacks hear: in a line below a finding its note, and of a file that
    /// can't be opened where it is included.
    void showNotes() { m_showsNotes = true; }

    /// Adds to every finding from now on what is known of it, and with \a areShown shows that below it.
    void setExplanations(std::unique_ptr<Explanations> explanations, bool areShown)
    {
        m_explanations = std::move(explanations);
        m_showsExplanations = areShown;
    }
    bool showsExplanations() const { return m_explanations && m_showsExplanations; }
    Explanations *explanations() const { return m_explanations.get(); }
    /// Whether the standard error is a terminal.
    bool isTerminal() const { return m_isTerminal; }
    /// Writes everything from now on to \a stream in \a format, until finish().
    void setFormat(std::unique_ptr<FindingFormat> format, std::FILE *stream);
    /// Ends the text in a format; false when it could not be written.
    [[nodiscard]] bool finish();
    bool hasFormat() const { return m_format != nullptr; }

    void take(const Finding &finding) override;
    /// Takes a finding of lint, for which \a more of its kind stand at its place. Its notes are told as its warnings.
    void takeLint(const Finding &finding, qsizetype more);
    /// Takes a finding of \a rule that has no place.
    void tell(const Rule &rule, const QStringList &arguments = {}) { take(Finding(rule, {}, arguments)); }
    /// Takes a note that has no place and is told as a warning is.
    void tellNote(const Rule &rule, const QStringList &arguments) { tellAsNote(Finding(rule, {}, arguments)); }
    /// Takes \a finding, whatever it is, as such a note.
    void tellAsNote(const Finding &finding) { tell(finding, Severity::Note, finding.text()); }
    /// How many errors were told so far.
    int errorCount() const { return m_errors; }

    /// Shows \a text as the state of a long job in one line of a terminal, which the next message or clearProgress()
    /// takes away. Elsewhere, and in a short job, nothing is shown.
    void showProgress(const QString &text);
    void clearProgress();

private:
    void tell(Finding finding, Severity severity, const QString &text);
    void print(Severity severity, const Finding &finding, const QString &words);

    std::unique_ptr<FindingFormat> m_format; ///< none for the text of compilers
    std::unique_ptr<Explanations> m_explanations;
    std::FILE *m_stream = stderr; ///< for the findings
    QElapsedTimer m_sinceStart;
    bool m_isTerminal;
    bool m_useColours;
    Verbosity m_verbosity = Verbosity::Normal;
    bool m_isStrict = false;
    bool m_showsNotes = false;
    bool m_showsExplanations = false;
    bool m_isProgressShown = false;
    int m_errors = 0;
};

/// \a text without what a terminal would obey instead of showing it, and what turns the order of letters around: a
/// question mark stands for each. Line feeds and tabs stay with \a areLaidOut.
QString harmlessText(QString text, bool areLaidOut);

/// Writes \a text to the standard output; false, with an error told to \a messages, when it can't be written.
[[nodiscard]] bool printResult(const QString &text, Messages &messages);
[[nodiscard]] bool printResult(const QByteArray &text, Messages &messages);

} // namespace veldmap::cli
