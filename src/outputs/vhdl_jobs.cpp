#include "files/paths.h"
#include "model/archive.h"
#include "model/root_archive.h"
#include "outputs/output_jobs.h"
#include "outputs/outputs.h"
#include "vhdl/packages.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Why the package of \a archive is not written; empty when it can be. Its name comes from the description, as it
/// stands there.
QString refusalOf(const VMXMLArchive &archive)
{
    const QString package = archive.getVHDLPkgName();
    if (package.contains(u'/') || package.contains(".."_L1))
        return u"the name of a package may lead nowhere else"_s;
    return {};
}

} // namespace

OutputJobs vhdlJobs(const VMRootArchive &root, const OutputOptions &options)
{
    const auto packages = std::make_shared<const PackageTexts>(root);
    OutputJobs jobs;
    for (const VMXMLArchive *archive : root.xmlArchives) {
        OutputJob job;
        job.path = options.directory + u'/' + archive->getVHDLFileRelativeName();
        job.refusal = refusalOf(*archive);
        if (!liesBelow(options.directory, job.path))
            job.outside = QDir::cleanPath(job.path);
        job.directory = archive->getRelativePath(false);
        job.make = [archive, packages, path = job.path](const QByteArray &) {
            JobTexts texts;
            texts.files.push_back({path, packages->textOf(*archive, texts.findings).toUtf8(), {}});
            return texts;
        };
        jobs.push_back(std::move(job));
    }
    return jobs;
}

} // namespace veldmap
