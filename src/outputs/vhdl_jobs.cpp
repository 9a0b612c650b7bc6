#include "files/paths.h"
#include "model/archive.h"
#include "model/root_archive.h"
#include "outputs/output_jobs.h"
#include "outputs/outputs.h"
#include "vhdl/packages.h"
#include "vhdl/self_check.h"

#include <QDir>
#include <QSet>

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

OutputJob selfCheckJob(const VMRootArchive &root, const std::shared_ptr<const PackageTexts> &packages,
                       const QString &directory)
{
    OutputJob job;
    job.path = directory + u'/' + vhdlSelfCheckNameOf(root) + ".vhd"_L1;
    job.make = [&root, packages, path = job.path](const QByteArray &) {
        JobTexts texts;
        texts.files.push_back({path, vhdlSelfCheckOf(root, *packages).toUtf8(), {}});
        return texts;
    };
    return job;
}

} // namespace

OutputJobs vhdlJobs(const VMRootArchive &root, const OutputOptions &options)
{
    const auto packages =
        std::make_shared<const PackageTexts>(root, options.accepted ? RefusedLines::Comments : RefusedLines::Stay);
    OutputJobs jobs;
    QSet<QString> paths;
    for (const VMXMLArchive *archive : root.xmlArchives) {
        OutputJob job;
        job.path = options.directory + u'/' + archive->getVHDLFileRelativeName();
        job.refusal = refusalOf(*archive);
        if (!liesBelow(options.directory, job.path))
            job.outside = QDir::cleanPath(job.path);
        job.directory = archive->getRelativePath(false);
        // Where two packages have one file, the second has no line that VHDL takes.
        job.onlyFinds = options.accepted && paths.contains(job.path);
        paths.insert(job.path);
        job.make = [archive, packages, path = job.path, onlyFinds = job.onlyFinds](const QByteArray &) {
            JobTexts texts;
            const QString text = packages->textOf(*archive, texts.findings);
            if (!onlyFinds)
                texts.files.push_back({path, text.toUtf8(), {}});
            return texts;
        };
        jobs.push_back(std::move(job));
    }
    if (options.selfCheck)
        jobs.push_back(selfCheckJob(root, packages, options.directory));
    return jobs;
}

} // namespace veldmap
