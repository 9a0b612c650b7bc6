#include "files/paths.h"
#include "headers/header_texts.h"
#include "headers/self_check.h"
#include "model/archive.h"
#include "model/memory_map.h"
#include "model/root_archive.h"
#include "outputs/output_jobs.h"
#include "outputs/outputs.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

JobTexts textsOf(const VMXMLArchive &archive, const HeaderTexts &headers, const QString &directory)
{
    const HeaderTexts::Headers made = headers.headersOf(archive);
    JobTexts texts;
    texts.files.push_back({directory + u'/' + archive.getHFileRelativeName(), made.c.toUtf8(), made.pointedTypes});
    if (archive.generateAsm)
        texts.files.push_back({directory + u'/' + archive.getASMFileRelativeName(), made.assembly.toUtf8(), {}});
    return texts;
}

OutputJob selfCheckJob(const VMRootArchive &root, const QString &directory)
{
    OutputJob job;
    job.path = directory + u'/' + selfCheckNameOf(root);
    job.make = [&root, path = job.path](const QByteArray &) {
        JobTexts texts;
        texts.files.push_back({path, selfCheckOf(root).toUtf8(), {}});
        return texts;
    };
    return job;
}

QDateTime timeOf(const QString &path)
{
    return QFileInfo(path).lastModified();
}

/// When \a path was changed last; of a file that is not there, when the directory was that would hold it.
QDateTime timeOfChange(const QString &path)
{
    QFileInfo info(path);
    while (!info.exists() && !info.isRoot())
        info.setFile(info.absolutePath());
    return info.lastModified();
}

/// When the last of the files was changed that the headers of \a map are made from. Any of them may decide what stands
/// in any header: values and sizes of types come along includes, instances stand in other files than their types, and
/// a software description sees variables of the chip.
QDateTime timeOfSources(const VMMemoryMap &map, const OutputOptions &options)
{
    QStringList sources = options.sources;
    for (const VMRootArchive *root : {map.chipRootArchive, map.softRootArchive}) {
        for (qsizetype at = 0; root && options.sources.isEmpty() && at < root->xmlArchives.size(); ++at)
            sources += root->xmlArchives[at]->getTotalPath();
    }
    QDateTime last;
    for (const QString &source : std::as_const(sources)) {
        const QDateTime time = timeOfChange(source);
        if (!last.isValid() || last < time)
            last = time;
    }
    return last;
}

} // namespace

OutputJobs headerJobs(const VMMemoryMap &map, const VMRootArchive &root, const OutputOptions &options)
{
    const bool looksAtSources = map.skipUpToDate && !options.asPublished;
    const QDateTime ofSources = looksAtSources ? timeOfSources(map, options) : QDateTime();
    const auto headers = std::make_shared<const HeaderTexts>(root);
    OutputJobs jobs;
    for (const VMXMLArchive *archive : root.xmlArchives) {
        OutputJob job;
        job.path = options.directory + u'/' + archive->getHFileRelativeName();
        job.directory = archive->getRelativePath(false);
        if (archive->generateAsm)
            job.further += options.directory + u'/' + archive->getASMFileRelativeName();
        job.maySkip = map.skipUpToDate;
        if (job.maySkip)
            job.described = looksAtSources ? ofSources : timeOf(archive->getTotalPath());
        if (!liesBelow(options.directory, job.path))
            job.outside = QDir::cleanPath(job.path);
        job.make = [archive, headers, directory = options.directory](const QByteArray &) {
            return textsOf(*archive, *headers, directory);
        };
        jobs.push_back(std::move(job));
    }
    if (options.selfCheck)
        jobs.push_back(selfCheckJob(root, options.directory));
    return jobs;
}

} // namespace veldmap
