#pragma once

#include "files/file_writer.h"
#include "outputs/output_job.h"
#include "outputs/outputs.h"

#include <QHash>
#include <QSet>

#include <mutex>
#include <optional>

namespace veldmap {

/// Does the jobs of one output: makes their texts on the threads that \a options give, and writes them in order.
class OutputRun {
public:
    OutputRun(const OutputJobs &jobs, const OutputOptions &options, Sink &sink)
        : m_jobs(jobs), m_options(options), m_sink(sink)
    {
    }

    OutputFiles run();

    // What OrderedWork asks for.
    using Made = std::optional<JobTexts>;
    Made make(qsizetype at);
    void take(qsizetype at, Made made);
    static qint64 bytesOf(const Made &made);

private:
    JobTexts textsOf(const OutputJob &job);
    bool isUnreached(const OutputJob &job);
    bool isUpToDate(const OutputJob &job) const;
    bool isTakenLater(const QString &path, const OutputJob &job) const;
    void write(const OutputJob &job, JobTexts texts);
    bool writeInPieces(const OutputJob &job);
    bool writeFile(const OutputText &text, const OutputJob &job);
    void prepare(const QString &path);
    bool noteResult(const OutputJob &job, const QString &path, const WriteResult &result);
    bool isFull();
    void end(const OutputJob &job, const QString &path);
    WriteOptions howToWrite() const;
    void noteWritten(const QString &path, const WriteResult &result);
    QString reasonOf(const QString &directory, const WriteResult &result) const;
    void fail(const OutputJob &job, const QString &path, const QString &reason);
    void notePage(const OutputJob &job);
    void giveBack(QByteArray buffer);
    void tellFiles();

    const OutputJobs &m_jobs;
    const OutputOptions &m_options;
    Sink &m_sink;
    OutputFiles m_files;
    QHash<QString, const OutputJob *> m_lastJobs; // by path, the last that writes it; empty when all are written
    QSet<QString> m_clearedDirectories;           // that hold no leftovers
    QStringList m_overwritten;                    // paths of pages
    QSet<QString> m_pages;                        // paths of those written
    std::mutex m_mutex;                           // of what follows
    bool m_arePagesEnded = false;
    bool m_isFull = false;             // and nothing more is made
    std::vector<QByteArray> m_buffers; // that no text uses now
};

/// What \a jobs give.
OutputFiles runJobs(const OutputJobs &jobs, const OutputOptions &options, Sink &sink);

} // namespace veldmap
