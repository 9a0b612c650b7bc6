#include "cli/messages.h"

#include <QElapsedTimer>
#include <QRegularExpression>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

struct Level {
    QLatin1StringView word;
    QLatin1StringView colour; // as an escape sequence of terminals
};
constexpr Level kError = {"error"_L1, "\x1b[1;31m"_L1};
constexpr Level kWarning = {"warning"_L1, "\x1b[1;35m"_L1};
constexpr Level kLog = {"note"_L1, "\x1b[1;36m"_L1};
constexpr QLatin1StringView kColourEnd = "\x1b[0m"_L1;

Verbosity verbosity = Verbosity::Normal;
bool progressShown = false;
int errors = 0;

bool onTerminal()
{
    static const bool isTerminal = isatty(STDERR_FILENO) != 0;
    return isTerminal;
}

bool useColours()
{
    static const char *const refused = std::getenv("NO_COLOR");
    return onTerminal() && (!refused || *refused == '\0');
}

void writeError(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr);
}

void print(const Level &level, QString text)
{
    // soc.xml:3:17:Unvalid tag : 'reg' has a place, "Unable to open file soc.xml" has none.
    static const QRegularExpression placed(u"^(.+?:\\d+:\\d+):(.*)$"_s, QRegularExpression::DotMatchesEverythingOption);
    if (text.endsWith(u'\n'))
        text.chop(1);
    const QRegularExpressionMatch place = placed.match(text);
    const QString word = useColours() ? level.colour + QString(level.word) + u':' + kColourEnd : level.word + u':';
    clearProgress();
    writeError(place.hasMatch() ? place.captured(1) + ": "_L1 + word + u' ' + place.captured(2) + u'\n'
                                : word + u' ' + text + u'\n');
}

} // namespace

void setVerbosity(Verbosity newVerbosity)
{
    verbosity = newVerbosity;
}

void onLog(const char *text)
{
    if (verbosity == Verbosity::Verbose)
        print(kLog, QString::fromUtf8(text));
    else
        showProgress(QString::fromUtf8(text));
}

void onError(const char *text)
{
    printError(QString::fromUtf8(text));
}

void onWarning(const char *text)
{
    printWarning(QString::fromUtf8(text));
}

void printError(const QString &text)
{
    ++errors;
    print(kError, text);
}

void printWarning(const QString &text)
{
    if (verbosity != Verbosity::Quiet)
        print(kWarning, text);
}

int errorCount()
{
    return errors;
}

void showProgress(const QString &text)
{
    constexpr qint64 kLongJob = 500; // milliseconds
    static const QElapsedTimer sinceStart = [] {
        QElapsedTimer timer;
        timer.start();
        return timer;
    }();
    if (!onTerminal() || verbosity != Verbosity::Normal || sinceStart.elapsed() < kLongJob)
        return;
    constexpr qsizetype kLineWidth = 79; // a longer line would not be gone at the end
    writeError(u"\r\x1b[K"_s + text.left(kLineWidth));
    std::fflush(stderr);
    progressShown = true;
}

void clearProgress()
{
    if (progressShown)
        writeError(u"\r\x1b[K"_s);
    progressShown = false;
}

bool printResult(const QString &text)
{
    return printResult(text.toUtf8());
}

bool printResult(const QByteArray &bytes)
{
    clearProgress();
    const bool written = std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stdout) ==
                             static_cast<std::size_t>(bytes.size()) &&
                         std::fflush(stdout) == 0;
    if (!written)
        printError(u"The standard output can't be written: %1"_s.arg(QString::fromLocal8Bit(std::strerror(errno))));
    return written;
}

} // namespace veldmap::cli
