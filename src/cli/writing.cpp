#include "cli/writing.h"

#include "cli/description.h"
#include "cli/program_rules.h"
#include "cli/session.h"

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
QString poolDirectory(Output output)
{
    const QString name = output == Output::Docs ? u"docpool"_s : u"sitepool"_s;
    const QDir program(programDirectory());
    const QString beside = program.filePath(name);
    const QString installed = QDir::cleanPath(program.filePath(QStringLiteral(VELDMAP_INSTALLED_POOL "/") + name));
    return !QFileInfo::exists(beside) && QFileInfo::exists(installed) ? installed : beside;
}

bool writeOfRoot(Session &session, Output output, const QString &directory, bool chip, const Options &asked)
{
    Messages &messages = session.messages;
    if (!QDir().mkpath(directory)) {
        messages.tell(rules::kNoDirectory, {directory});
        return false;
    }
    OutputOptions options;
    options.directory = directory;
    options.chip = chip;
    options.threads = asked.threads;
    options.selfCheck = asked.selfCheck;
    options.single = asked.single;
    if (output == Output::Docs || output == Output::Site)
        options.pool = poolDirectory(output);
    options.progress = [&](const QString &file) { messages.showProgress(u"Writing %1..."_s.arg(file)); };
    const OutputFiles files = writeOutput(session.map, output, options, messages);
    messages.clearProgress();
    return files.isComplete();
}

} // namespace

bool writeFiles(Session &session, Output output, const QString &directory, const Options &options)
{
    const auto write = [&](const QString &ofRoot, bool chip) {
        return writeOfRoot(session, output, ofRoot, chip, options);
    };
    const VMMemoryMap &map = session.map;
    if (output == Output::Vhdl || output == Output::Site)
        return write(directory, true);
    const bool hasBoth = map.chipRootArchive && map.softRootArchive;
    bool isComplete = true;
    if (map.chipRootArchive)
        isComplete = write(hasBoth ? directory + "/chip"_L1 : directory, true) && isComplete;
    if (map.softRootArchive)
        isComplete = write(hasBoth ? directory + "/soft"_L1 : directory, false) && isComplete;
    return isComplete;
}

bool writeHeaders(Session &session, const QString &directory, const Options &options)
{
    const std::pair<bool, Output> outputs[] = {
        {true, Output::Headers},
        {options.types, Output::Types},
        {options.accessors, Output::Accessors},
        {options.globals, Output::Globals},
    };
    bool isComplete = true;
    for (const auto &[isWanted, output] : outputs)
        isComplete = (!isWanted || writeFiles(session, output, directory, options)) && isComplete;
    return isComplete;
}

ExitStatus loadAndWrite(const Options &options, Output output, Session &session)
{
    if (!loadAndLint(options, session))
        return kFailed;
    return writeFiles(session, output, options.outputDirectory, options) ? kDone : kFailed;
}

bool requireChip(const Options &options, Session &session)
{
    if (options.chip.isEmpty())
        session.messages.tell(rules::kNoChip);
    return !options.chip.isEmpty();
}

} // namespace veldmap::cli
