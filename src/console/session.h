#pragma once

#include <veldmap/findings/finding.h>
#include <veldmap/target/target.h>
#include <veldmap/veldmap_export.h>

#include <QList>
#include <QString>

#include <memory>
#include <optional>

class VMMemoryMap;

namespace veldmap {

class ConsoleState;

/// Who runs a session: it hears what the session finds, prints what it shows, and answers what it asks.
class ConsoleHost : public Sink {
public:
    /// Shows \a text, which is one line or several, each with its line feed.
    virtual void print(const QString &text) = 0;
    /// Whether the user wants what \a question asks. Nobody does where nobody can be asked.
    virtual bool confirm(const QString &question)
    {
        Q_UNUSED(question)
        return false;
    }
    /// Whether somebody sits there, who can be asked and can end what would go on without end.
    virtual bool isInteractive() const { return false; }
};

/// What may stand next in a line.
struct ConsoleCandidate {
    QString text;      ///< what stands in the place of the word that is begun
    QString name;      ///< as a list shows it
    QString arguments; ///< of an operation, or of a command
    QString help;      ///< on one line
    bool takesMore;    ///< whether further words stand behind it
};

/// Candidates for one place of a line.
struct ConsoleCandidates {
    qsizetype begin = 0; ///< of the word that they replace
    QList<ConsoleCandidate> list;
    bool areFiles = false; ///< names of files, which the list leaves out
};

/// A live console on a chip, without its terminal: lines go in, and accesses, texts and findings come out.
///
/// A line is a path, an operation on one, an assignment, an expression or a command; the command "help" tells of them.
/// The session owns its target and the names that lines keep, and reads and writes values in the tree of its map, which
/// must outlive it. All of it belongs to one thread; interrupt() alone may be called by others and by handlers of
/// signals.
class VELDMAP_EXPORT ConsoleSession {
public:
    ConsoleSession(const VMMemoryMap &map, ConsoleHost &host);
    ConsoleSession(const ConsoleSession &) = delete;
    ConsoleSession &operator=(const ConsoleSession &) = delete;
    ~ConsoleSession();

    /// Opens the target that \a words name as openTarget() has them. False, with a finding, when that is not possible;
    /// the command "connect" then tries again.
    [[nodiscard]] bool open(const QStringList &words);
    /// Takes \a target, which is there already, in the place of the one that the session has.
    void use(std::unique_ptr<Target> target);

    /// Runs one line. False when it failed, which the host has heard then. \a place, if it is one, is where findings
    /// say that they are.
    bool run(const QString &line, const Place &place = {});
    /// Runs the lines of \a text up to the first that fails, or with \a keepsGoing all of them. False when one failed.
    /// Findings name \a file.
    bool runScript(const QString &text, const QString &file, bool keepsGoing = false);
    /// The value of \a expression, in which paths are read on the target. Nothing when it has none or an access failed.
    std::optional<quint32> valueOf(const QString &expression);
    /// Puts what was written in its place, for a target that keeps it back. False, with a finding, when that fails.
    [[nodiscard]] bool flush();

    /// What may stand at the end of \a line in the place of the word that ends there. No access is made for it.
    ConsoleCandidates candidatesFor(const QString &line) const;
    /// Whether a line has asked for the end.
    bool isOver() const;
    /// Ends what the session does at the moment, as soon as it can.
    void interrupt() noexcept;

private:
    std::unique_ptr<ConsoleState> m_state;
};

} // namespace veldmap
