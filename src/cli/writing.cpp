#include "cli/writing.h"

#include "cli/build_record.h"
#include "cli/description.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "files/file_writer.h"
#include "files/paths.h"
#include "text/depfile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <system_error>

#ifdef Q_OS_LINUX
#include <sys/auxv.h>
#endif

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

#ifdef Q_OS_LINUX
/// The file of the running program, without links.
QString programFile()
{
    const QString file = QFileInfo(u"/proc/self/exe"_s).canonicalFilePath();
    if (!file.isEmpty())
        return file;
    // A root in which packages are built may lack /proc; the system tells each program too how it was called.
    const auto *name = reinterpret_cast<const char *>(getauxval(AT_EXECFN));
    return name ? QFileInfo(QFile::decodeName(name)).canonicalFilePath() : QString();
}
#endif

/// The directory in which the running program lies, wherever it was called from.
QString programDirectory()
{
#ifdef Q_OS_LINUX
    // A QCoreApplication tells it too, but has something to say about every locale that is not UTF-8.
    return QFileInfo(programFile()).path();
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

/// Passes findings on, and to a record too.
class RecordingSink final : public Sink {
public:
    RecordingSink(Sink &sink, BuildRecord *record) : m_sink(sink), m_record(record) {}

    void take(const Finding &finding) override
    {
        m_sink.take(finding);
        if (m_record)
            m_record->add(finding);
    }

private:
    Sink &m_sink;
    BuildRecord *m_record; // may be null
};

/// Writes what is wanted of one run, and notes what became of it.
class Writing {
public:
    /// \a record, if not null, learns what is written.
    Writing(const Options &options, Session &session, BuildRecord *record = nullptr)
        : m_options(options), m_session(session), m_record(record)
    {
    }

    bool write(const WantedOutput &wanted);
    /// Takes from the record, which is current, what became of all files.
    void leave();
    /// Writes the list and the depfile, where they are asked for; false, with errors told, when they can't be.
    bool writeLists();
    void tellSummary();
    /// The files for the list, if one is asked for.
    const QStringList &paths() const { return m_paths; }

private:
    bool writeOfRoot(Output output, const QString &directory, bool chip);
    void note(const OutputFiles &files);
    bool writeList(const QString &path, const QString &text);

    const Options &m_options;
    Session &m_session;
    BuildRecord *m_record;
    QStringList m_paths;  ///< of the files that the outputs have
    QStringList m_copied; ///< that were read beside the descriptions
    qsizetype m_written = 0;
    qsizetype m_unchanged = 0;
    qsizetype m_skipped = 0;
    qsizetype m_failed = 0;
    qint64 m_bytes = 0;    ///< of all files of the outputs so far
    bool m_isFull = false; ///< with what comes next they would be too many
};

bool Writing::write(const WantedOutput &wanted)
{
    const VMMemoryMap &map = m_session.map;
    if (wanted.output == Output::Vhdl || wanted.output == Output::Site)
        return writeOfRoot(wanted.output, wanted.directory, true);
    const bool hasBoth = map.chipRootArchive && map.softRootArchive;
    bool isComplete = true;
    if (map.chipRootArchive)
        isComplete = writeOfRoot(wanted.output, wanted.directory + (hasBoth ? "/chip"_L1 : ""_L1), true);
    if (map.softRootArchive)
        isComplete = writeOfRoot(wanted.output, wanted.directory + (hasBoth ? "/soft"_L1 : ""_L1), false) && isComplete;
    return isComplete;
}

bool Writing::writeOfRoot(Output output, const QString &directory, bool chip)
{
    Messages &messages = m_session.messages;
    OutputOptions options;
    options.directory = directory;
    options.chip = chip;
    options.threads = m_options.threads;
    options.selfCheck = m_options.selfCheck;
    options.accepted = m_options.accepted;
    options.single = m_options.single;
    options.mostBytes = m_options.output.mostBytes - m_bytes;
    options.sources = m_session.files.read + m_session.files.missing;
    if (output == Output::Docs || output == Output::Site)
        options.pool = poolDirectory(output);
    if (!m_options.output.list.isEmpty() || !m_options.output.depfile.isEmpty())
        m_paths += pathsOf(m_session.map, output, options);
    if (m_options.output.isDryRun)
        return true;
    if (m_isFull) {
        m_failed += pathsOf(m_session.map, output, options).size();
        return false;
    }
    std::error_code error;
    std::filesystem::create_directories(nativePath(directory), error);
    if (error) {
        messages.tell(rules::kNoDirectory, {directory, systemText(error.value())});
        m_failed += pathsOf(m_session.map, output, options).size();
        return false;
    }
    options.progress = [&](const QString &file) { messages.showProgress(u"Writing %1..."_s.arg(file)); };
    RecordingSink sink(messages, m_record);
    const OutputFiles files = writeOutput(m_session.map, output, options, sink);
    messages.clearProgress();
    note(files);
    if (m_record)
        m_record->add(files);
    return files.isComplete();
}

void Writing::leave()
{
    QSet<QString> directories;
    for (const QString &path : m_record->outputs()) {
        const QString directory = path.first(qMax<qsizetype>(path.lastIndexOf(u'/'), 0));
        if (!directories.contains(directory))
            removeLeftovers(directory);
        directories += directory;
    }
    m_record->tellFindings(m_session.messages);
    m_unchanged = m_record->outputs().size();
    m_paths = m_record->listed();
    m_copied = m_record->copied();
}

void Writing::note(const OutputFiles &files)
{
    m_written += files.written.size();
    m_unchanged += files.unchanged.size();
    m_skipped += files.skipped.size();
    m_failed += files.failed.size() + files.missing.size() + files.unreached.size() + files.beyond.size();
    m_bytes += files.bytes;
    m_isFull = !files.beyond.isEmpty();
    m_copied += files.copied;
}

bool Writing::writeLists()
{
    QStringList paths;
    for (const QString &path : std::as_const(m_paths))
        paths += QDir::cleanPath(path);
    paths.removeDuplicates();
    const OutputSettings &settings = m_options.output;
    bool isComplete = true;
    if (!settings.list.isEmpty())
        isComplete = writeList(settings.list, paths.join(u'\n') + u'\n');
    if (!settings.depfile.isEmpty()) {
        QStringList read = m_session.files.read + m_copied + m_session.files.missing;
        read.removeDuplicates();
        const QStringList targets = settings.target.isEmpty() ? paths : QStringList(settings.target);
        isComplete = writeList(settings.depfile, depfileText(targets, read)) && isComplete;
    }
    return isComplete;
}

bool Writing::writeList(const QString &path, const QString &text)
{
    if (path == "-"_L1)
        return printResult(text, m_session.messages);
    removeLeftovers(QFileInfo(path).path());
    const WriteResult result = writeWholeFile(path, text.toUtf8(), {.keepsSame = true});
    if (result.outcome == WriteResult::Failed)
        m_session.messages.tell(rules::kUnwritten, {path, result.reason});
    return result.outcome != WriteResult::Failed;
}

void Writing::tellSummary()
{
    Messages &messages = m_session.messages;
    if (messages.hasFormat() || m_options.output.isDryRun)
        return;
    QStringList numbers = {QString::number(m_written), QString::number(m_unchanged), QString::number(m_failed)};
    if (m_skipped > 0)
        messages.tellNote(rules::kWrittenOrSkipped, numbers << QString::number(m_skipped));
    else
        messages.tellNote(rules::kWritten, numbers);
}

/// How much of the instances \a wanted needs: headers and packages name only where they lie.
InstanceParts partsFor(const std::vector<WantedOutput> &wanted, const Options &options)
{
    constexpr Output kOutlines[] = {Output::Headers, Output::Vhdl, Output::Types, Output::Globals};
    const bool areOutlines = std::ranges::all_of(wanted, [&](const WantedOutput &one) {
        return std::ranges::find(kOutlines, one.output) != std::end(kOutlines);
    });
    return areOutlines && !options.selfCheck ? InstanceParts::Outlines : InstanceParts::All;
}

ExitStatus loadAndWriteAll(const Options &options, const std::vector<WantedOutput> &wanted, Session &session,
                           BuildRecord *record)
{
    if (!loadAndLint(options, session, partsFor(wanted, options)))
        return kFailed;
    const int errorsBefore = session.messages.errorCount(); // which have stopped nothing
    Writing writing(options, session, record);
    bool isComplete = true;
    for (const WantedOutput &output : wanted)
        isComplete = writing.write(output) && isComplete;
    isComplete = isComplete && writing.writeLists();
    writing.tellSummary();
    if (isComplete && record)
        record->keep(session.files, writing.paths());
    return isComplete && session.messages.errorCount() == errorsBefore ? kDone : kFailed;
}

/// What loadAndWriteAll() does when no file is to be written.
ExitStatus leaveAll(const Options &options, Session &session, BuildRecord &record)
{
    const int errorsBefore = session.messages.errorCount();
    Writing writing(options, session, &record);
    writing.leave();
    const bool isComplete = writing.writeLists();
    writing.tellSummary();
    return isComplete && session.messages.errorCount() == errorsBefore ? kDone : kFailed;
}

} // namespace

std::vector<WantedOutput> wantedHeaders(const Options &options, const QString &directory)
{
    const std::pair<bool, Output> outputs[] = {
        {true, Output::Headers},
        {options.types, Output::Types},
        {options.accessors, Output::Accessors},
        {options.globals, Output::Globals},
    };
    std::vector<WantedOutput> wanted;
    for (const auto &[isWanted, output] : outputs) {
        if (isWanted)
            wanted.push_back({output, directory});
    }
    return wanted;
}

ExitStatus loadAndWrite(const Options &options, const std::vector<WantedOutput> &wanted, Session &session)
{
    return loadAndWriteAll(options, wanted, session, nullptr);
}

ExitStatus loadAndBuild(const Options &options, const std::vector<WantedOutput> &wanted, Session &session)
{
    // What is up to date for who skips goes by times alone.
    if (options.skipUpToDate || options.readsInput() || options.output.isDryRun)
        return loadAndWrite(options, wanted, session);
    BuildRecord kept(options, wanted);
    if (kept.isCurrent()) {
        // A load has much to tell, and the time that it takes for outlines is that of `check`.
        if (!loadAndLint(options, session, InstanceParts::Outlines))
            return kFailed;
        if (kept.hasRead(session.files))
            return leaveAll(options, session, kept);
        // A description was changed at this very moment. Neither tree nor record is good for anything then.
        std::destroy_at(&session.map);
        std::construct_at(&session.map);
        session.files = {};
    }
    BuildRecord record(options, wanted);
    return loadAndWriteAll(options, wanted, session, &record);
}

bool requireChip(const Options &options, Session &session)
{
    if (options.chip.isEmpty())
        session.messages.tell(rules::kNoChip);
    return !options.chip.isEmpty();
}

} // namespace veldmap::cli
