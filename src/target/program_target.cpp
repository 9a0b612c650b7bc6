#include "files/paths.h"
#include "target/kinds.h"
#include "target/program_lines.h"
#include "target/stream.h"
#include "text/bit_arithmetic.h"

#include <QFile>

#include <cerrno>
#include <csignal>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>

extern char **environ; // NOLINT: POSIX declares it nowhere

using namespace Qt::StringLiterals;

// A program of the user's own that makes the accesses: exec:COMMAND, which the shell runs. Its standard input and
// output are one socket; what it tells its user goes to the standard error.

namespace veldmap {

namespace {

constexpr qsizetype kLongestLine = 4096; // bytes of an answer
constexpr std::chrono::milliseconds kEndingTime{1000};

/// A program that runs in a process group of its own, so that keys on the terminal do not end it.
class Child {
public:
    Child() = default;
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;
    ~Child() { end(); }

    /// Runs \a command with \a descriptor as its input and output; 0 or the error.
    int start(const QByteArray &command, int descriptor)
    {
        posix_spawn_file_actions_t files;
        ::posix_spawn_file_actions_init(&files);
        ::posix_spawn_file_actions_adddup2(&files, descriptor, 0);
        ::posix_spawn_file_actions_adddup2(&files, descriptor, 1);
        posix_spawnattr_t attributes;
        ::posix_spawnattr_init(&attributes);
        ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
        char shell[] = "sh";
        char option[] = "-c";
        QByteArray line = command;
        char *arguments[] = {shell, option, line.data(), nullptr};
        const int error = ::posix_spawn(&m_process, "/bin/sh", &files, &attributes, arguments, environ);
        ::posix_spawnattr_destroy(&attributes);
        ::posix_spawn_file_actions_destroy(&files);
        if (error != 0)
            m_process = -1;
        return error;
    }

    /// Waits until it has ended, as one does whose input has; does it the harder the longer it takes. Its status, as
    /// wait() gives it.
    int end()
    {
        int status = 0;
        for (const int signal : {0, SIGTERM, SIGKILL}) {
            if (m_process > 0 && signal != 0)
                ::kill(-m_process, signal);
            if (hasEnded(status))
                break;
        }
        m_process = -1;
        return status;
    }

private:
    bool hasEnded(int &status)
    {
        TargetSettings settings;
        settings.timeout = kEndingTime;
        return m_process <= 0 || Patience(settings).waitFor([&](std::chrono::milliseconds slice) {
            if (::waitpid(m_process, &status, WNOHANG) != 0)
                return true;
            std::this_thread::sleep_for(std::min(slice, std::chrono::milliseconds(5)));
            return false;
        });
    }

    pid_t m_process = -1;
};

class ProgramTarget final : public PlacedTarget {
public:
    explicit ProgramTarget(const QString &command) : m_command(command) {}
    ~ProgramTarget() override { m_stream.close(); } // the end of its input, before it is waited for

    QString description() const override { return u"the program '%1'"_s.arg(m_command); }

    TargetAnswer connect() override
    {
        stop();
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
            return noAnswer(systemText(errno));
        m_stream.take(ends[0]);
        Stream others;
        others.take(ends[1]);
        const int error = m_child.start(QFile::encodeName(m_command), ends[1]);
        if (error != 0)
            m_stream.close();
        return error == 0 ? TargetAnswer() : noAnswer(systemText(error));
    }

    TargetAnswer read(quint32 address, std::span<std::byte> bytes, int width) override
    {
        for (std::size_t at = 0; at < bytes.size(); at += std::size_t(width)) {
            ProgramAnswer said;
            if (TargetAnswer answer = ask(readLineOf(address + quint32(at), width), 8 * width, said); !answer)
                return answer;
            storeNumber(*said.value, &bytes[at], width);
        }
        return {};
    }

    TargetAnswer write(quint32 address, std::span<const std::byte> bytes, int width) override
    {
        for (std::size_t at = 0; at < bytes.size(); at += std::size_t(width)) {
            ProgramAnswer said;
            const QByteArray line = writeLineOf(address + quint32(at), width, numberFrom(&bytes[at], width));
            if (TargetAnswer answer = ask(line, 0, said); !answer)
                return answer;
        }
        return {};
    }

private:
    /// Says \a line. What is \a said is a number of \a bits, or that it is done where \a bits is 0.
    TargetAnswer ask(const QByteArray &line, int bits, ProgramAnswer &said)
    {
        const Patience patience(settings);
        if (patience.isInterrupted())
            return noAnswer(u"interrupted"_s);
        if (!m_stream.isOpen() && !m_canReconnect)
            return noAnswer(u"%1 does not run"_s.arg(description()));
        TargetAnswer answer = m_stream.isOpen() ? TargetAnswer() : connect();
        if (answer)
            answer = m_stream.send(line, patience);
        QByteArray text;
        if (answer)
            answer = nextLine(patience, text);
        if (answer) {
            const std::optional<ProgramAnswer> heard = programAnswerOf(text);
            said = heard.value_or(said);
            if (!said.error.isEmpty())
                return notHere(said.error);
            const bool isValue = said.value && *said.value <= lowBits(bits);
            if (!heard || !(bits > 0 ? isValue : said.isOk))
                answer = noAnswer(u"it answers '%1', which is no answer"_s.arg(
                    QString::fromUtf8(text.first(qMin<qsizetype>(text.size(), 40))).simplified()));
        }
        if (!answer)
            answer.reason = description() + ": "_L1 + giveUp(answer.reason);
        return answer;
    }

    TargetAnswer nextLine(const Patience &patience, QByteArray &line)
    {
        qsizetype end = m_received.indexOf('\n');
        while (end < 0) {
            QByteArray bytes;
            if (TargetAnswer answer = m_stream.receive(bytes, patience); !answer)
                return answer;
            m_received += bytes;
            end = m_received.indexOf('\n');
            if (end < 0 && m_received.size() > kLongestLine)
                return noAnswer(u"it says more than a line"_s);
        }
        line = m_received.first(end);
        m_received.remove(0, end + 1);
        return {};
    }

    /// Ends the program, whose next answer nobody could tell from that to another line; \a reason, or how it has ended.
    QString giveUp(const QString &reason)
    {
        m_canReconnect = settings.interrupted && *settings.interrupted;
        const int status = stop();
        if (reason != kClosed)
            return reason;
        return WIFEXITED(status) ? u"it has ended with status %1"_s.arg(WEXITSTATUS(status)) : u"it was ended"_s;
    }

    int stop()
    {
        m_stream.close();
        m_received.clear();
        return m_child.end();
    }

    const QString m_command;
    Child m_child;
    Stream m_stream;
    QByteArray m_received;       // behind the last line
    bool m_canReconnect = false; ///< it was ended for an interruption alone
};

} // namespace

std::unique_ptr<PlacedTarget> makeProgramTarget(const TargetWord &word)
{
    if (word.details.trimmed().isEmpty())
        return refuse(word, u"a program is exec:COMMAND"_s);
    return std::make_unique<ProgramTarget>(word.details);
}

} // namespace veldmap
