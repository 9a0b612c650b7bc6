#include "cli/explanations.h"
#include "cli/line_editor.h"

#include <QByteArray>
#include <QDir>
#include <QFileInfo>

#include <cerrno>
#include <climits>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cwchar>
#include <histedit.h>
#include <poll.h>
#include <unistd.h>

// libedit reads through a function of ours, which waits for a character or a signal at once: Ctrl-C ends the line that
// is typed, and a terminal of another size is drawn anew.

using namespace Qt::StringLiterals;

namespace veldmap::cli {

class LineEditor::Private {
public:
    Private(Complete complete, const QString &historyFile)
        : m_complete(std::move(complete)), m_historyFile(historyFile.toLocal8Bit())
    {
        std::setlocale(LC_CTYPE, ""); // by which libedit reads letters
        m_editor = el_init("veldmap", stdin, stdout, stderr);
        m_history = history_init();
        el_set(m_editor, EL_CLIENTDATA, this);
        el_set(m_editor, EL_PROMPT, &Private::promptOf);
        el_set(m_editor, EL_EDITOR, "emacs");
        el_set(m_editor, EL_GETCFN, &Private::readCharacter);
        addFunction(L"veldmap-complete", L"what may stand here", &Private::completeHere, L"^I");
        addFunction(L"veldmap-cancel", L"leave the line", &Private::cancel, L"^C");
        bind("^R", "em-inc-search-prev");
        for (const auto &[keys, what] : {std::pair("\\e[H", "ed-move-to-beg"), std::pair("\\e[F", "ed-move-to-end"),
                                         std::pair("\\e[1~", "ed-move-to-beg"), std::pair("\\e[4~", "ed-move-to-end"),
                                         std::pair("\\e[3~", "ed-delete-next-char"),
                                         std::pair("\\e[1;5C", "em-next-word"), std::pair("\\e[1;5D", "ed-prev-word")})
            bind(keys, what);
        HistEvent event;
        constexpr int kLines = 1000;
        history(m_history, &event, H_SETSIZE, kLines);
        history(m_history, &event, H_SETUNIQUE, 1);
        el_set(m_editor, EL_HIST, history, m_history);
        if (!m_historyFile.isEmpty())
            history(m_history, &event, H_LOAD, m_historyFile.constData());
        el_source(m_editor, nullptr); // the user's own keys
    }

    ~Private()
    {
        history_end(m_history);
        el_end(m_editor);
    }

    std::optional<QString> read(const QString &prompt, bool isKept)
    {
        m_prompt = prompt.toLocal8Bit();
        m_isCancelled = false;
        // Both signals wait until the function that reads lets them in.
        sigset_t mine;
        sigemptyset(&mine);
        sigaddset(&mine, SIGINT);
        sigaddset(&mine, SIGWINCH);
        sigprocmask(SIG_BLOCK, &mine, &m_signals);
        struct sigaction before = {};
        struct sigaction onResize = {};
        onResize.sa_handler = [](int) { isResized = 1; };
        sigaction(SIGWINCH, &onResize, &before);
        el_set(m_editor, EL_PREP_TERM, 1); // before the prompt: what is typed behind it is a key, as Ctrl-D is
        int count = 0;
        const char *const bytes = el_gets(m_editor, &count);
        sigaction(SIGWINCH, &before, nullptr);
        sigprocmask(SIG_SETMASK, &m_signals, nullptr);
        if (m_isCancelled) {
            std::fputs("^C\n", stdout);
            std::fflush(stdout);
            return QString();
        }
        if (!bytes || count <= 0) {
            std::fputs("\n", stdout);
            return std::nullopt;
        }
        QString line = QString::fromLocal8Bit(bytes, count);
        if (line.endsWith(u'\n'))
            line.chop(1);
        if (isKept && !line.trimmed().isEmpty())
            keep(line);
        return line;
    }

private:
    static Private &of(EditLine *editor)
    {
        void *self = nullptr;
        el_get(editor, EL_CLIENTDATA, &self);
        return *static_cast<Private *>(self);
    }

    static char *promptOf(EditLine *editor) { return of(editor).m_prompt.data(); }

    void bind(const char *keys, const char *what) { el_set(m_editor, EL_BIND, keys, what, nullptr); }

    /// The texts, which libedit keeps as they are, have to outlive the editor. It would never free copies of narrow
    /// ones.
    void addFunction(const wchar_t *name, const wchar_t *help, unsigned char (*function)(EditLine *, int),
                     const wchar_t *key)
    {
        el_wset(m_editor, EL_ADDFN, name, help, function);
        el_wset(m_editor, EL_BIND, key, name, nullptr);
    }

    void keep(const QString &line)
    {
        HistEvent event;
        history(m_history, &event, H_ENTER, line.toLocal8Bit().constData());
        if (m_historyFile.isEmpty())
            return;
        QDir().mkpath(QFileInfo(QString::fromLocal8Bit(m_historyFile)).path());
        history(m_history, &event, H_SAVE, m_historyFile.constData()); // at once: a session may end in many ways
    }

    static int readCharacter(EditLine *editor, wchar_t *character)
    {
        Private &self = of(editor);
        std::mbstate_t state = {};
        for (;;) {
            pollfd input = {STDIN_FILENO, POLLIN, 0};
            if (::ppoll(&input, 1, nullptr, &self.m_signals) < 0) {
                if (errno != EINTR)
                    return -1;
                if (isResized != 0) {
                    isResized = 0;
                    el_resize(editor);
                    std::fputs("\r\x1b[J", stdout); // it takes the line for an empty one then
                    std::fflush(stdout);
                    el_set(editor, EL_REFRESH);
                    continue;
                }
                *character = L'\3';
                return 1;
            }
            char byte = 0;
            const ssize_t count = ::read(STDIN_FILENO, &byte, 1);
            if (count <= 0)
                return static_cast<int>(count);
            const std::size_t length = std::mbrtowc(character, &byte, 1, &state);
            if (length <= 1)
                return 1;
            if (length == static_cast<std::size_t>(-1)) // no letter of this locale
                state = {};
        }
    }

    static unsigned char cancel(EditLine *editor, int)
    {
        of(editor).m_isCancelled = true;
        return CC_EOF;
    }

    static unsigned char completeHere(EditLine *editor, int)
    {
        Private &self = of(editor);
        const LineInfo *const line = el_line(editor);
        const QString text = QString::fromLocal8Bit(line->buffer, line->cursor - line->buffer);
        ConsoleCandidates candidates = self.m_complete(text);
        const QString word = text.sliced(candidates.begin);
        candidates = withFiles(std::move(candidates), word);
        if (candidates.list.isEmpty())
            return CC_REFRESH_BEEP;
        QString shared = sharedBegin(candidates);
        if (candidates.list.size() == 1 && candidates.list.front().takesMore)
            shared += u' ';
        if (shared.size() > word.size()) {
            el_insertstr(editor, shared.sliced(word.size()).toLocal8Bit().constData());
            return CC_REFRESH;
        }
        if (candidates.list.size() > 1 || !candidates.list.front().help.isEmpty()) {
            std::fputs(("\n" + listOfCandidates(candidates, widthOfTerminal()).toLocal8Bit()).constData(), stdout);
            std::fflush(stdout);
        }
        return CC_REDISPLAY;
    }

    static inline volatile std::sig_atomic_t isResized = 0;

    Complete m_complete;
    QByteArray m_historyFile;
    QByteArray m_prompt;
    EditLine *m_editor = nullptr;
    History *m_history = nullptr;
    sigset_t m_signals = {}; // that were let in before
    bool m_isCancelled = false;
};

LineEditor::LineEditor(Complete complete, const QString &historyFile)
    : m_private(std::make_unique<Private>(std::move(complete), historyFile))
{
}

LineEditor::~LineEditor() = default;

std::optional<QString> LineEditor::read(const QString &prompt, bool isKept)
{
    return m_private->read(prompt, isKept);
}

} // namespace veldmap::cli
