#include "files/paths.h"
#include "headers/header_texts.h"
#include "headers/self_check.h"
#include "model/archive.h"
#include "model/root_archive.h"
#include "outputs/output_jobs.h"
#include "outputs/outputs.h"

#include <QDir>

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

} // namespace

OutputJobs headerJobs(const VMRootArchive &root, const OutputOptions &options, bool skipUpToDate)
{
    const auto headers = std::make_shared<const HeaderTexts>(root);
    OutputJobs jobs;
    for (const VMXMLArchive *archive : root.xmlArchives) {
        OutputJob job;
        job.path = options.directory + u'/' + archive->getHFileRelativeName();
        job.directory = archive->getRelativePath(false);
        if (skipUpToDate)
            job.description = archive->getTotalPath();
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
