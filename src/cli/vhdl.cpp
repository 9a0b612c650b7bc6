#include "cli/vhdl.h"

#include "cli/commands.h"
#include "cli/description.h"
#include "cli/messages.h"
#include "model/memory_map.h"
#include "vhdl/packages.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

bool requireChip(const Options &options)
{
    if (options.chip.isEmpty())
        printError(u"VHDL packages are those of a chip: name its description with --chip FILE."_s);
    return !options.chip.isEmpty();
}

bool writePackages(const VMMemoryMap &map, const QString &directory)
{
    if (!QDir().mkpath(directory)) {
        printError(u"The directory %1 can't be made."_s.arg(directory));
        return false;
    }
    const VhdlReport report =
        writeVhdlPackages(map, directory, [](const QString &file) { showProgress(u"Writing %1..."_s.arg(file)); });
    clearProgress();
    for (const VhdlFinding &finding : report.findings)
        printWarning(u"%1:0:0:%2"_s.arg(finding.file, finding.text)); // the tree knows no lines
    for (const FailedFile &file : report.failed)
        printError(u"%1 can't be written: %2"_s.arg(file.path, file.reason));
    return report.failed.isEmpty();
}

ExitStatus vhdl(const Options &options)
{
    if (!requireChip(options))
        return kWrongUsage;
    VMMemoryMap &map = processMemoryMap();
    if (!loadDescriptions(options, map))
        return kFailed;
    return writePackages(map, options.outputDirectory) ? kDone : kFailed;
}

} // namespace veldmap::cli
