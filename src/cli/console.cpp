#include "cli/commands.h"
#include "cli/description.h"
#include "cli/line_editor.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "console/session.h"

#include <QDir>
#include <QFile>

#include <csignal>
#include <cstdio>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

const QString kPrompt = u"veldmap> "_s;
const QString kInputName = u"<stdin>"_s;

/// Shows what a session of the console has to say, and asks what it has to ask.
class TerminalHost final : public ConsoleHost {
public:
    explicit TerminalHost(Messages &messages) : m_messages(messages) {}

    /// Somebody sits at \a editor, which stays with the caller.
    void setEditor(LineEditor *editor) { m_editor = editor; }
    /// Whether all that was shown so far could be.
    bool isHeard() const { return m_isHeard; }

    void take(const Finding &finding) override
    {
        m_messages.take(finding);
        if (!m_messages.showsExplanations() && !finding.hint.isEmpty())
            m_messages.tellNote(rules::kHint, {finding.hint});
    }
    void print(const QString &text) override { m_isHeard = m_isHeard && printResult(text, m_messages); }
    bool confirm(const QString &question) override
    {
        const std::optional<QString> answer =
            m_editor ? m_editor->read(question + " [y/N] "_L1, false) : std::optional<QString>();
        return answer && (answer->trimmed().startsWith(u'y', Qt::CaseInsensitive));
    }
    bool isInteractive() const override { return m_editor != nullptr; }

private:
    Messages &m_messages;
    LineEditor *m_editor = nullptr;
    bool m_isHeard = true;
};

/// Lets Ctrl-C end what the session does, and not the process, as long as it lives.
class InterruptedByUser {
public:
    explicit InterruptedByUser(ConsoleSession &session)
    {
        running = &session;
        struct sigaction action = {}; // without SA_RESTART: what waits ends
        action.sa_handler = [](int) {
            isPressed = 1;
            running->interrupt();
        };
        ::sigaction(SIGINT, &action, &m_before);
    }
    InterruptedByUser(const InterruptedByUser &) = delete;
    InterruptedByUser &operator=(const InterruptedByUser &) = delete;
    ~InterruptedByUser() { ::sigaction(SIGINT, &m_before, nullptr); }

    /// Whether that has happened since it was asked last.
    static bool wasPressed()
    {
        const bool was = isPressed != 0;
        isPressed = 0;
        return was;
    }

private:
    static inline ConsoleSession *running = nullptr;
    static inline volatile std::sig_atomic_t isPressed = 0;
    struct sigaction m_before = {};
};

/// Where lines are kept that were typed, from run to run; empty where there is no place for them.
QString historyFile()
{
    QString folder = qEnvironmentVariable("XDG_STATE_HOME");
    if (folder.isEmpty() && qEnvironmentVariableIsEmpty("HOME"))
        return {};
    if (folder.isEmpty())
        folder = qEnvironmentVariable("HOME") + "/.local/state"_L1;
    return folder + "/veldmap/console_history"_L1;
}

/// Runs what is typed. What goes wrong there is told and is no failure of the program, unless in the end something that
/// was written is not kept.
bool runPrompt(ConsoleSession &session, TerminalHost &host)
{
    LineEditor editor([&session](const QString &line) { return session.candidatesFor(line); }, historyFile());
    const InterruptedByUser interrupted(session);
    host.setEditor(&editor);
    bool isFlushed = true;
    while (!session.isOver() && host.isHeard()) {
        const std::optional<QString> line = editor.read(kPrompt, true);
        if (!line)
            break;
        InterruptedByUser::wasPressed(); // at the prompt, which has shown it
        session.run(*line);
        if (InterruptedByUser::wasPressed())
            host.print(u"\n"_s); // behind the ^C of the terminal
        isFlushed = session.flush();
    }
    host.setEditor(nullptr);
    return isFlushed;
}

/// Runs the lines of the standard input as they come.
bool runInput(ConsoleSession &session, bool keepsGoing)
{
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
        return false;
    bool isDone = true;
    for (qint64 line = 1; (isDone || keepsGoing) && !session.isOver() && !input.atEnd(); ++line) {
        const QByteArray bytes = input.readLine();
        if (bytes.isEmpty())
            break;
        isDone = session.run(QString::fromUtf8(bytes), {kInputName, line, 1}) && isDone;
    }
    return isDone;
}

bool runLines(const Options &options, ConsoleSession &session)
{
    bool isDone = true;
    for (qsizetype at = 0; at < options.lines.size() && (isDone || options.keepsGoing) && !session.isOver(); ++at)
        isDone = session.run(options.lines[at], {u"-c"_s, at + 1, 1}) && isDone;
    return isDone;
}

bool runFile(const Options &options, ConsoleSession &session, Messages &messages)
{
    if (options.source == "-"_L1)
        return runInput(session, options.keepsGoing);
    QFile file(options.source);
    QByteArray bytes;
    if (file.open(QIODevice::ReadOnly))
        bytes = file.readAll();
    if (file.error() != QFile::NoError) {
        messages.tell(rules::kScriptUnreadable, {options.source, file.errorString()});
        return false;
    }
    return session.runScript(QString::fromUtf8(bytes), options.source, options.keepsGoing);
}

} // namespace

ExitStatus console(const Options &options, Session &run)
{
    if (!loadDescriptions(options, run))
        return kFailed;
    TerminalHost host(run.messages);
    ConsoleSession session(run.map, host);
    const bool isScript = !options.lines.isEmpty() || !options.source.isEmpty();
    const bool isPrompt = !isScript && isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
    // At a prompt, "connect" tries again.
    if (!options.targets.isEmpty() && !session.open(options.targets) && !isPrompt)
        return kFailed;
    bool isDone = true;
    if (isPrompt) {
        isDone = runPrompt(session, host);
    } else {
        isDone = runLines(options, session);
        if (!options.source.isEmpty() && (isDone || options.keepsGoing) && !session.isOver())
            isDone = runFile(options, session, run.messages) && isDone;
        if (!isScript)
            isDone = runInput(session, options.keepsGoing);
    }
    return session.flush() && isDone && host.isHeard() ? kDone : kFailed;
}

} // namespace veldmap::cli
