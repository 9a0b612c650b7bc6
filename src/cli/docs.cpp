#include "cli/docs.h"

#include "cli/commands.h"
#include "cli/description.h"
#include "cli/messages.h"
#include "docsite/site.h"
#include "model/memory_map.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

/// The directory in which the running program lies, wherever it was called from.
QString programDirectory()
{
#ifdef Q_OS_LINUX
    // A QCoreApplication tells it too, but has something to say about every locale that is not UTF-8.
    return QFileInfo(QFileInfo(u"/proc/self/exe"_s).canonicalFilePath()).path();
#else
    int count = 1;
    char name[] = "veldmap";
    char *words[] = {name, nullptr};
    const QCoreApplication application(count, words);
    return QCoreApplication::applicationDirPath();
#endif
}

/// The directory with the fixed files of a site: beside the program, or where an installation has it.
QString poolDirectory()
{
    const QDir program(programDirectory());
    const QString beside = program.filePath(u"docpool"_s);
    const QString installed = QDir::cleanPath(program.filePath(QStringLiteral(VELDMAP_INSTALLED_POOL)));
    return !QFileInfo::exists(beside) && QFileInfo::exists(installed) ? installed : beside;
}

/// Writes the site of one root; false when a file could not be written.
bool writeSite(const VMMemoryMap &map, const QString &directory, bool chip)
{
    if (!QDir().mkpath(directory)) {
        printError(u"The directory %1 can't be made."_s.arg(directory));
        return false;
    }
    const QString pool = poolDirectory();
    const SiteReport report = writeDocumentation(
        map, directory, chip, pool, [](const QString &file) { showProgress(u"Writing %1..."_s.arg(file)); });
    clearProgress();
    for (const QString &name : report.overwritten)
        printWarning(u"%1/%2.html shows the last of several instances of that name."_s.arg(directory, name));
    if (!report.missing.isEmpty())
        printError(u"%1 is not complete, since %2 lacks: %3"_s.arg(directory, pool, report.missing.join(", "_L1)));
    for (const FailedFile &file : report.failed)
        printError(u"%1 can't be written: %2"_s.arg(file.path, file.reason));
    if (!report.unreached.isEmpty())
        printError(u"The pages behind it are not written: %1"_s.arg(report.unreached.join(", "_L1)));
    return report.failed.isEmpty() && report.missing.isEmpty();
}

} // namespace

bool writeSites(const VMMemoryMap &map, const QString &directory)
{
    return writeEachRoot(map, directory,
                         [&map](const QString &ofRoot, bool chip) { return writeSite(map, ofRoot, chip); });
}

ExitStatus docs(const Options &options)
{
    VMMemoryMap &map = processMemoryMap();
    if (!loadDescriptions(options, map))
        return kFailed;
    return writeSites(map, options.outputDirectory) ? kDone : kFailed;
}

} // namespace veldmap::cli
