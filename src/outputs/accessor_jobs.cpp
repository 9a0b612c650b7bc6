#include "files/paths.h"
#include "headers/accessors.h"
#include "model/archive.h"
#include "model/root_archive.h"
#include "outputs/output_jobs.h"
#include "outputs/outputs.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// The descriptions by the file names of their headers.
QHash<QString, QString> descriptionsOfHeaders(const VMRootArchive &root)
{
    QHash<QString, QString> descriptions;
    for (const VMXMLArchive *archive : root.xmlArchives) {
        for (const QString &header : {archive->getHFileRelativeName(), archive->getASMFileRelativeName()})
            descriptions[QFileInfo(header).fileName()] = archive->relativeFileName;
    }
    return descriptions;
}

} // namespace

OutputJobs accessorJobs(const VMRootArchive &root, const OutputOptions &options)
{
    const QHash<QString, QString> descriptions = descriptionsOfHeaders(root);
    OutputJobs jobs;
    for (const VMXMLArchive *archive : root.xmlArchives) {
        const QString name = accessorHeaderName(*archive);
        OutputJob job;
        job.path = options.directory + u'/' + name;
        job.directory = archive->getRelativePath(false);
        if (!liesBelow(options.directory, job.path))
            job.outside = QDir::cleanPath(job.path);
        const QString taken = descriptions.value(QFileInfo(name).fileName());
        if (!taken.isEmpty())
            job.refusal = u"a header of %1 has this name"_s.arg(taken);
        job.make = [archive, path = job.path](const QByteArray &) {
            AccessorHeader header = accessorHeaderOf(*archive);
            JobTexts texts;
            texts.files.push_back({path, header.text.toUtf8(), {}});
            texts.findings = std::move(header.findings);
            return texts;
        };
        jobs.push_back(std::move(job));
    }
    return jobs;
}

} // namespace veldmap
