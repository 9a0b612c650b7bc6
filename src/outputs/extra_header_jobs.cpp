// The headers beside those of the files: the words that they use, and the global variables.

#include "headers/globals.h"
#include "headers/types_text.h"
#include "model/archive.h"
#include "model/memory_map.h"
#include "model/root_archive.h"
#include "outputs/output_jobs.h"
#include "outputs/outputs.h"

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// A job for the file \a name, unless a description has a header of that name. Headers are included by their names
/// alone, so one in another directory might be taken for it.
OutputJob jobFor(const QString &name, const VMRootArchive &root, const OutputOptions &options)
{
    OutputJob job;
    job.path = options.directory + u'/' + name;
    const QString file = u'/' + name;
    for (const VMXMLArchive *archive : root.xmlArchives) {
        for (const QString &header : {archive->getHFileRelativeName(), archive->getASMFileRelativeName()}) {
            if ((u'/' + header).endsWith(file))
                job.refusal = u"a header of %1 has this name"_s.arg(archive->relativeFileName);
        }
    }
    return job;
}

JobTexts oneText(const QString &path, QByteArray bytes)
{
    JobTexts texts;
    texts.files.push_back({path, std::move(bytes), {}});
    return texts;
}

} // namespace

OutputJobs typesJobs(const VMRootArchive &root, const OutputOptions &options)
{
    OutputJob job = jobFor(u"veldmap/types.h"_s, root, options);
    job.directory = u"veldmap"_s;
    job.make = [path = job.path](const QByteArray &) { return oneText(path, typesText()); };
    return {job};
}

OutputJobs globalsJobs(const VMMemoryMap &map, const VMRootArchive &root, const OutputOptions &options)
{
    OutputJob c = jobFor(u"globals.h"_s, root, options);
    c.make = [path = c.path, &map](const QByteArray &) {
        return oneText(path, globalsHeader(*map.globalVariables).toUtf8());
    };
    OutputJob assembly = jobFor(u"globals_asm.h"_s, root, options);
    assembly.make = [path = assembly.path, &map](const QByteArray &) {
        return oneText(path, globalsAssemblyHeader(*map.globalVariables).toUtf8());
    };
    return {c, assembly};
}

} // namespace veldmap
