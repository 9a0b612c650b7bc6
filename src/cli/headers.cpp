#include "cli/headers.h"

#include "cli/commands.h"
#include "cli/description.h"
#include "cli/messages.h"
#include "headers/header_files.h"
#include "headers/trace.h"
#include "model/memory_map.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

/// Writes the headers of one root; false when a file could not be written.
bool writeHeaders(const VMMemoryMap &map, const QString &directory, bool chip)
{
    if (!QDir().mkpath(directory)) {
        printError(u"The directory %1 can't be made."_s.arg(directory));
        return false;
    }
    const GenerationReport report =
        writeCHeaders(map, directory, chip, [](const QString &file) { showProgress(u"Writing %1..."_s.arg(file)); });
    clearProgress();
    for (const QString &file : report.outside)
        printWarning(
            u"%1 lies outside %2, as its description lies outside the directory of the root."_s.arg(file, directory));
    for (const FailedFile &file : report.failed)
        printError(u"%1 can't be written: %2"_s.arg(file.path, file.reason));
    return report.failed.isEmpty();
}

} // namespace

bool writeAllHeaders(const VMMemoryMap &map, const QString &directory)
{
    const TraceRedirection noTrace(nullptr);
    return writeEachRoot(map, directory,
                         [&map](const QString &ofRoot, bool chip) { return writeHeaders(map, ofRoot, chip); });
}

ExitStatus headers(const Options &options)
{
    VMMemoryMap &map = processMemoryMap();
    map.skipUpToDate = options.skipUpToDate;
    if (!loadDescriptions(options, map))
        return kFailed;
    return writeAllHeaders(map, options.outputDirectory) ? kDone : kFailed;
}

} // namespace veldmap::cli
