#include "cli/docs.h"

#include "cli/commands.h"
#include "cli/description.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "docsite/site.h"

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
bool writeSite(Session &session, const QString &directory, bool chip)
{
    if (!QDir().mkpath(directory)) {
        session.messages.tell(rules::kNoDirectory, {directory});
        return false;
    }
    const QString pool = poolDirectory();
    const SiteReport report = writeDocumentation(session.map, directory, chip, pool, [&](const QString &file) {
        session.messages.showProgress(u"Writing %1..."_s.arg(file));
    });
    session.messages.clearProgress();
    for (const QString &name : report.overwritten)
        session.messages.tell(rules::kOverwritten, {directory, name});
    if (!report.missing.isEmpty())
        session.messages.tell(rules::kIncomplete, {directory, pool, report.missing.join(", "_L1)});
    for (const FailedFile &file : report.failed)
        session.messages.tell(rules::kNotWritten, {file.path, file.reason});
    if (!report.unreached.isEmpty())
        session.messages.tell(rules::kUnreached, {report.unreached.join(", "_L1)});
    return report.failed.isEmpty() && report.missing.isEmpty();
}

} // namespace

bool writeSites(Session &session, const QString &directory)
{
    return writeEachRoot(session.map, directory,
                         [&session](const QString &ofRoot, bool chip) { return writeSite(session, ofRoot, chip); });
}

ExitStatus docs(const Options &options, Session &session)
{
    if (!loadDescriptions(options, session))
        return kFailed;
    return writeSites(session, options.outputDirectory) ? kDone : kFailed;
}

} // namespace veldmap::cli
