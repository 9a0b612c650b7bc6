#include "cli/messages.h"

#include "cli/program_rules.h"
#include "files/paths.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

constexpr QLatin1StringView kColourEnd = "\x1b[0m"_L1;
constexpr QLatin1StringView kLineClear = "\r\x1b[K"_L1;

void write(const QByteArray &bytes, std::FILE *stream)
{
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream);
}

void writeError(const QString &text)
{
    write(text.toUtf8(), stderr);
}

QLatin1StringView colourOf(Severity severity)
{
    switch (severity) {
    case Severity::Note:
        return "\x1b[1;36m"_L1;
    case Severity::Warning:
        return "\x1b[1;35m"_L1;
    case Severity::Error:
        break;
    }
    return "\x1b[1;31m"_L1;
}

bool areColoursRefused()
{
    const char *const refused = std::getenv("NO_COLOR");
    return refused && *refused != '\0';
}

bool isObeyed(QChar c)
{
    switch (c.category()) {
    case QChar::Other_Control:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        break;
    }
    return (c >= u'\u202A' && c <= u'\u202E') || (c >= u'\u2066' && c <= u'\u2069');
}

} // namespace

QString harmlessText(QString text, bool areLaidOut)
{
    const auto isMeant = [areLaidOut](QChar c) { return areLaidOut && (c == u'\n' || c == u'\t'); };
    const auto isBad = [&](QChar c) { return isObeyed(c) && !isMeant(c); };
    if (std::ranges::any_of(std::as_const(text), isBad))
        std::ranges::replace_if(text, isBad, u'?');
    return text;
}

Messages::Messages() : m_isTerminal(isatty(STDERR_FILENO) != 0), m_useColours(m_isTerminal && !areColoursRefused())
{
    m_sinceStart.start();
}

void Messages::setFormat(std::unique_ptr<FindingFormat> format, std::FILE *stream)
{
    m_format = std::move(format);
    m_stream = stream;
    write(m_format->begin(), m_stream);
}

bool Messages::finish()
{
    if (!m_format)
        return true;
    write(m_format->end(), m_stream);
    m_format.reset();
    errno = 0;
    const bool isWritten = std::fflush(m_stream) == 0 && std::ferror(m_stream) == 0;
    if (!isWritten && m_stream == stdout)
        tell(rules::kOutput, {systemText(errno)});
    return isWritten;
}

void Messages::take(const Finding &finding)
{
    if (finding.severity == Severity::Note) {
        if (m_verbosity == Verbosity::Verbose)
            print(Severity::Note, finding, finding.text());
        else
            showProgress(placedText(finding));
        return;
    }
    tell(finding, m_isStrict ? Severity::Error : finding.severity, finding.text());
}

void Messages::takeLint(const Finding &finding, qsizetype more)
{
    QString text = finding.text();
    if (more > 0)
        text += u" (and %1 more here)"_s.arg(more);
    if (!m_format) // which names the rule of every finding
        text += " ["_L1 + finding.rule->id + u']';
    tell(finding, finding.severity, text);
}

void Messages::tell(Finding finding, Severity severity, const QString &text)
{
    if (severity == Severity::Error)
        ++m_errors;
    if (severity != Severity::Error && m_verbosity == Verbosity::Quiet)
        return;
    if (!m_showsNotes)
        finding.note.clear();
    if (m_showsNotes && finding.place.isNull() && !finding.related.isEmpty())
        finding.place = finding.related.takeFirst().place;
    if (m_explanations)
        m_explanations->complete(finding);
    else if (!m_showsNotes)
        finding.related.clear();
    print(severity, finding, text);
    if (m_format)
        return;
    if (!finding.note.isEmpty())
        print(Severity::Note, finding, finding.note);
    if (m_explanations && m_showsExplanations)
        writeError(harmlessText(m_explanations->of(finding), true));
}

void Messages::print(Severity severity, const Finding &finding, const QString &words)
{
    QString text = words;
    if (text.endsWith(u'\n'))
        text.chop(1);
    clearProgress();
    if (m_format) {
        write(m_format->piece(finding, severity, text), m_stream);
        return;
    }
    QString word = wordOf(severity) + u':';
    if (m_useColours)
        word = colourOf(severity) + word + kColourEnd;
    const Place &place = finding.place;
    const QString where = place.isNull() ? QString()
                                         : place.file + u':' + QString::number(place.line) + u':' +
                                               QString::number(place.column) + ": "_L1;
    writeError(harmlessText(where, false) + word + u' ' + harmlessText(text, false) + u'\n');
}

void Messages::showProgress(const QString &text)
{
    constexpr qint64 kLongJob = 500; // milliseconds
    if (!m_isTerminal || m_verbosity != Verbosity::Normal || m_sinceStart.elapsed() < kLongJob)
        return;
    constexpr qsizetype kLineWidth = 79; // a longer line would not be gone at the end
    writeError(kLineClear + harmlessText(text.left(kLineWidth), false));
    std::fflush(stderr);
    m_isProgressShown = true;
}

void Messages::clearProgress()
{
    if (m_isProgressShown)
        writeError(kLineClear);
    m_isProgressShown = false;
}

bool printResult(const QString &text, Messages &messages)
{
    return printResult(text.toUtf8(), messages);
}

bool printResult(const QByteArray &bytes, Messages &messages)
{
    messages.clearProgress();
    const bool written = std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stdout) ==
                             static_cast<std::size_t>(bytes.size()) &&
                         std::fflush(stdout) == 0;
    if (!written)
        messages.tell(rules::kOutput, {systemText(errno)});
    return written;
}

} // namespace veldmap::cli
