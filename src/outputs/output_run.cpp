#include "outputs/output_run.h"

#include "files/directories.h"
#include "files/file_rules.h"
#include "files/paths.h"
#include "outputs/ordered_work.h"
#include "outputs/output_rules.h"

#include <QFileInfo>

#include <algorithm>
#include <system_error>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Passes a text on up to a number of bytes. The same text may be started several times.
class Bounded final : public TextSink {
public:
    explicit Bounded(qint64 most) : m_most(most) {}

    /// Begins the text anew, for \a sink; false if it was once too long.
    bool start(TextSink &sink)
    {
        m_sink = &sink;
        m_size = 0;
        return !m_isExceeded;
    }
    bool take(QByteArrayView piece) override
    {
        m_size += piece.size();
        m_isExceeded = m_isExceeded || m_size > m_most;
        return !m_isExceeded && m_sink->take(piece);
    }
    bool isExceeded() const { return m_isExceeded; }
    /// Of the text since it was started.
    qint64 size() const { return m_size; }

private:
    qint64 m_most;
    qint64 m_size = 0;
    TextSink *m_sink = nullptr;
    bool m_isExceeded = false;
};

} // namespace

OutputFiles OutputRun::run()
{
    for (const OutputJob &job : m_jobs) {
        if (m_options.asPublished || !job.refusal.isEmpty() || job.onlyFinds)
            continue;
        m_lastJobs[job.path] = &job;
        for (const QString &path : job.further)
            m_lastJobs[path] = &job;
    }
    OrderedWork(*this, static_cast<qsizetype>(m_jobs.size())).run(m_options.threads);
    tellFiles();
    return m_files;
}

/// The texts of a job, or nothing where its turn may show that none are needed.
OutputRun::Made OutputRun::make(qsizetype at)
{
    const OutputJob &job = m_jobs[static_cast<std::size_t>(at)];
    if (isFull() || job.waits || !job.refusal.isEmpty() || isUnreached(job) || isUpToDate(job))
        return std::nullopt;
    return textsOf(job);
}

qint64 OutputRun::bytesOf(const Made &made)
{
    qint64 bytes = 0;
    if (made) {
        for (const OutputText &text : made->files)
            bytes += text.bytes.size();
    }
    return bytes;
}

/// Everything that depends on the files written so far is decided here, as if there were one thread.
void OutputRun::take(qsizetype at, Made made)
{
    const OutputJob &job = m_jobs[static_cast<std::size_t>(at)];
    if (isFull()) {
        if (!job.onlyFinds)
            m_files.beyond << job.path << job.further;
        return;
    }
    if (isUnreached(job)) {
        m_files.unreached += job.name;
        return;
    }
    if (!job.refusal.isEmpty()) {
        fail(job, job.path, job.refusal);
        return;
    }
    recursiveMkdir(m_options.directory, job.directory);
    if (isUpToDate(job)) {
        if (m_options.trace)
            m_options.trace("Skipping "_L1 + job.path);
        m_files.skipped += job.path;
        if (!m_options.asPublished)
            m_files.skipped += job.further;
        return;
    }
    if (!job.outside.isEmpty())
        m_files.outside += job.outside;
    write(job, made ? std::move(*made) : textsOf(job));
}

/// Whether the files of \a job are newer than what they are made from.
bool OutputRun::isUpToDate(const OutputJob &job) const
{
    const auto isNewer = [&job](const QString &path) {
        const QDateTime written = QFileInfo(path).lastModified();
        return written.isValid() && (!job.described.isValid() || job.described < written);
    };
    return job.maySkip && isNewer(job.path) && (m_options.asPublished || std::ranges::all_of(job.further, isNewer));
}

/// Whether a later job writes the file \a path of \a job too.
bool OutputRun::isTakenLater(const QString &path, const OutputJob &job) const
{
    return m_lastJobs.value(path, &job) != &job;
}

JobTexts OutputRun::textsOf(const OutputJob &job)
{
    QByteArray buffer;
    if (job.usesBuffer) {
        const std::lock_guard lock(m_mutex);
        if (!m_buffers.empty()) {
            buffer = std::move(m_buffers.back());
            m_buffers.pop_back();
        }
    }
    return job.make(std::move(buffer));
}

bool OutputRun::isUnreached(const OutputJob &job)
{
    if (!job.isPage)
        return false;
    const std::lock_guard lock(m_mutex);
    return m_arePagesEnded;
}

void OutputRun::write(const OutputJob &job, JobTexts texts)
{
    for (const Finding &finding : texts.findings)
        m_sink.take(finding);
    if (!job.copied.isEmpty())
        (texts.isMissing ? m_files.missing : m_files.copied) += texts.isMissing ? job.name : job.copied;
    if (texts.isMissing) {
        return;
    }
    if (!texts.failure.isEmpty()) {
        fail(job, job.path, texts.failure);
        return;
    }
    if (texts.isTooLarge && !writeInPieces(job))
        return;
    for (OutputText &text : texts.files) {
        if (!writeFile(text, job))
            return;
        if (job.usesBuffer)
            giveBack(std::move(text.bytes));
    }
    if (job.isPage)
        notePage(job);
}

/// Writes the large text of \a job as it is made.
bool OutputRun::writeInPieces(const OutputJob &job)
{
    if (isTakenLater(job.path, job))
        return true;
    prepare(job.path);
    Bounded bounded(m_options.mostBytes - m_files.bytes);
    const TextSource text = [&](TextSink &sink) { return bounded.start(sink) && job.pieces(bounded); };
    const WriteResult result = writeLargeFile(job.path, text, howToWrite());
    if (bounded.isExceeded()) {
        end(job, job.path);
        return false;
    }
    m_files.bytes += bounded.size();
    return noteResult(job, job.path, result);
}

bool OutputRun::writeFile(const OutputText &text, const OutputJob &job)
{
    if (isTakenLater(text.path, job))
        return true;
    if (text.bytes.size() > m_options.mostBytes - m_files.bytes) {
        end(job, text.path);
        return false;
    }
    m_files.bytes += text.bytes.size();
    if (m_options.trace) {
        for (const QString &line : text.trace)
            m_options.trace(line);
    }
    prepare(text.path);
    return noteResult(job, text.path, writeWholeFile(text.path, text.bytes, howToWrite()));
}

WriteOptions OutputRun::howToWrite() const
{
    return m_options.asPublished ? WriteOptions() : WriteOptions{true, m_options.directory};
}

/// What comes before a file is written.
void OutputRun::prepare(const QString &path)
{
    if (m_options.progress)
        m_options.progress(path);
    const QString directory = QFileInfo(path).path();
    if (!m_clearedDirectories.contains(directory)) {
        removeLeftovers(directory);
        m_clearedDirectories += directory;
    }
}

bool OutputRun::noteResult(const OutputJob &job, const QString &path, const WriteResult &result)
{
    if (result.outcome == WriteResult::Failed)
        fail(job, path, reasonOf(QFileInfo(path).path(), result));
    else
        noteWritten(path, result);
    return result.outcome != WriteResult::Failed;
}

bool OutputRun::isFull()
{
    const std::lock_guard lock(m_mutex);
    return m_isFull;
}

/// Ends the run: with the file \a path of \a job it would be too much.
void OutputRun::end(const OutputJob &job, const QString &path)
{
    const QStringList paths = QStringList(job.path) + job.further;
    m_files.beyond += paths.sliced(qMax<qsizetype>(0, paths.indexOf(path)));
    const std::lock_guard lock(m_mutex);
    m_isFull = true;
}

void OutputRun::noteWritten(const QString &path, const WriteResult &result)
{
    (result.outcome == WriteResult::Unchanged ? m_files.unchanged : m_files.written) += path;
    if (result.outcome == WriteResult::InPlace)
        m_files.inPlace.append({path, result.reason});
}

/// Why a file in \a directory could not be written. A directory that is not there could not be made before.
QString OutputRun::reasonOf(const QString &directory, const WriteResult &result) const
{
    std::error_code error;
    if (!result.isOpened && directory != m_options.directory && !QFileInfo::exists(directory))
        std::filesystem::create_directories(nativePath(directory), error);
    return error ? systemText(error.value()) : result.reason;
}

void OutputRun::fail(const OutputJob &job, const QString &path, const QString &reason)
{
    m_files.failed.append({path, reason});
    if (!job.isPage)
        return;
    const std::lock_guard lock(m_mutex);
    m_arePagesEnded = true;
}

void OutputRun::notePage(const OutputJob &job)
{
    if (m_pages.contains(job.path))
        m_overwritten += job.path;
    m_pages += job.path;
}

void OutputRun::giveBack(QByteArray buffer)
{
    const std::lock_guard lock(m_mutex);
    m_buffers.push_back(std::move(buffer));
}

void OutputRun::tellFiles()
{
    for (const QString &file : m_files.outside)
        m_sink.take(Finding(output_rules::kOutside, {}, {file, m_options.directory}));
    for (const FailedFile &file : m_files.inPlace)
        m_sink.take(Finding(file_rules::kInPlace, {}, {file.path, file.reason}));
    for (const QString &page : m_overwritten)
        m_sink.take(Finding(output_rules::kOverwritten, {}, {page}));
    if (!m_files.missing.isEmpty())
        m_sink.take(
            Finding(output_rules::kMissing, {}, {m_options.directory, m_options.pool, m_files.missing.join(", "_L1)}));
    if (!m_files.beyond.isEmpty())
        m_sink.take(Finding(output_rules::kBeyond, {},
                            {m_files.beyond.first(), QString::number(m_files.beyond.size() - 1),
                             QString::number(m_options.mostBytes)}));
    for (const FailedFile &file : m_files.failed)
        m_sink.take(Finding(output_rules::kFailed, {}, {file.path, file.reason}));
    if (!m_files.unreached.isEmpty())
        m_sink.take(Finding(output_rules::kUnreached, {}, {m_files.unreached.join(", "_L1)}));
}

OutputFiles runJobs(const OutputJobs &jobs, const OutputOptions &options, Sink &sink)
{
    return OutputRun(jobs, options, sink).run();
}

} // namespace veldmap
