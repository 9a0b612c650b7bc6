#include "cli/build_record.h"

#include "files/file_writer.h"
#include "files/output_files.h"
#include "files/paths.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <system_error>

#ifdef Q_OS_LINUX
#include <dlfcn.h>
#endif

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

QDataStream &operator<<(QDataStream &stream, const FileStamp &stamp)
{
    return stream << stamp.device << stamp.inode << stamp.size << stamp.modified << stamp.changed;
}

QDataStream &operator>>(QDataStream &stream, FileStamp &stamp)
{
    return stream >> stamp.device >> stamp.inode >> stamp.size >> stamp.modified >> stamp.changed;
}

QDataStream &operator<<(QDataStream &stream, const Place &place)
{
    return stream << place.file << place.line << place.column << place.length;
}

QDataStream &operator>>(QDataStream &stream, Place &place)
{
    return stream >> place.file >> place.line >> place.column >> place.length;
}

QDataStream &operator<<(QDataStream &stream, const RelatedPlace &related)
{
    return stream << related.place << related.what;
}

QDataStream &operator>>(QDataStream &stream, RelatedPlace &related)
{
    return stream >> related.place >> related.what;
}

void putStamps(QDataStream &stream, const std::vector<FileStamp> &stamps)
{
    stream << static_cast<quint32>(stamps.size());
    for (const FileStamp &stamp : stamps)
        stream << stamp;
}

std::vector<FileStamp> takeStamps(QDataStream &stream)
{
    quint32 count = 0;
    stream >> count;
    std::vector<FileStamp> stamps;
    for (; count > 0 && stream.status() == QDataStream::Ok; --count)
        stream >> stamps.emplace_back();
    return stamps;
}

template <typename Item>
void putItems(QDataStream &stream, const QList<Item> &items)
{
    stream << static_cast<quint32>(items.size());
    for (const Item &item : items)
        stream << item;
}

template <typename Item>
QList<Item> takeItems(QDataStream &stream)
{
    quint32 count = 0;
    stream >> count;
    QList<Item> items;
    for (; count > 0 && stream.status() == QDataStream::Ok; --count)
        stream >> items.emplaceBack();
    return items;
}

void putRule(QDataStream &stream, const Rule &rule)
{
    stream << QByteArray(rule.id.data(), rule.id.size()) << static_cast<qint32>(rule.severity) << rule.words.toString()
           << rule.hint.toString() << QByteArray(rule.attribute.data(), rule.attribute.size());
}

/// A rule that was read, with its words.
struct KeptRule {
    QByteArray id;
    QString words;
    QString hint;
    QByteArray attribute;
    Rule rule = {};
};

/// What putRule() has put. Findings may outlive the record, so their rules stay until the program ends.
const Rule &takeRule(QDataStream &stream)
{
    static std::deque<KeptRule> rules;
    KeptRule &kept = rules.emplace_back();
    qint32 severity = 0;
    stream >> kept.id >> severity >> kept.words >> kept.hint >> kept.attribute;
    kept.rule = {QLatin1StringView(kept.id), static_cast<Severity>(severity), kept.words, kept.hint,
                 QLatin1StringView(kept.attribute)};
    return kept.rule;
}

void putFinding(QDataStream &stream, const Finding &finding)
{
    stream << finding.place.line << finding.place.column << finding.place.length << finding.arguments
           << static_cast<qint32>(finding.severity) << finding.note;
    putItems(stream, finding.related);
    putItems(stream, finding.includes);
    stream << finding.hint << finding.expression.text << static_cast<qint64>(finding.expression.character)
           << finding.expression.unknownName;
}

Finding takeFinding(QDataStream &stream, const Rule &rule, const QString &file)
{
    Finding finding(rule);
    finding.place.file = file;
    qint32 severity = 0;
    qint64 character = 0;
    stream >> finding.place.line >> finding.place.column >> finding.place.length >> finding.arguments >> severity >>
        finding.note;
    finding.related = takeItems<RelatedPlace>(stream);
    finding.includes = takeItems<Place>(stream);
    stream >> finding.hint >> finding.expression.text >> character >> finding.expression.unknownName;
    finding.severity = static_cast<Severity>(severity);
    finding.expression.character = character;
    return finding;
}

void putFindings(QDataStream &stream, const QList<Finding> &findings)
{
    std::vector<const Rule *> rules;
    for (const Finding &finding : findings) {
        if (std::ranges::find(rules, finding.rule) == rules.end())
            rules.push_back(finding.rule);
    }
    stream << static_cast<quint32>(rules.size());
    for (const Rule *rule : rules)
        putRule(stream, *rule);
    stream << static_cast<quint32>(findings.size());
    QString file;
    for (const Finding &finding : findings) {
        stream << static_cast<quint32>(std::ranges::find(rules, finding.rule) - rules.begin())
               << (finding.place.file == file);
        if (finding.place.file != file)
            stream << finding.place.file;
        file = finding.place.file;
        putFinding(stream, finding);
    }
}

QList<Finding> takeFindings(QDataStream &stream)
{
    quint32 count = 0;
    stream >> count;
    std::vector<const Rule *> rules;
    for (; count > 0 && stream.status() == QDataStream::Ok; --count)
        rules.push_back(&takeRule(stream));
    stream >> count;
    QList<Finding> findings;
    QString file; // of many findings in a row
    for (; count > 0 && stream.status() == QDataStream::Ok; --count) {
        quint32 rule = 0;
        bool isSameFile = false;
        stream >> rule >> isSameFile;
        if (!isSameFile)
            stream >> file;
        if (rule >= rules.size())
            return {};
        findings.append(takeFinding(stream, *rules[rule], file));
    }
    return findings;
}

} // namespace

namespace cli {

namespace {

constexpr quint32 kVersion = 1;

/// Tells a whole record from one that a crash of the system has left.
quint64 checksumOf(const QByteArray &bytes)
{
    return qHashBits(bytes.constData(), static_cast<std::size_t>(bytes.size())); // any seed would be of this process
}

/// The directory of records, empty when the user has none.
QString recordDirectory()
{
    const QString cache = qEnvironmentVariable("XDG_CACHE_HOME");
    if (QDir::isAbsolutePath(cache))
        return cache + "/veldmap"_L1;
    const QString home = qEnvironmentVariable("HOME");
    return QDir::isAbsolutePath(home) && QFileInfo(home).isDir() ? home + "/.cache/veldmap"_L1 : QString();
}

#ifdef Q_OS_LINUX
/// The files of this program, which a newer build of it replaces.
QStringList programFiles()
{
    QStringList files = {u"/proc/self/exe"_s};
    Dl_info library = {};
    if (::dladdr(reinterpret_cast<const void *>(&loadRoot), &library) != 0 && library.dli_fname)
        files += QFile::decodeName(library.dli_fname);
    return files;
}
#else
QStringList programFiles()
{
    return {};
}
#endif

/// All that decides what a build makes of the same files.
QByteArray keyOf(const Options &options, const std::vector<WantedOutput> &wanted)
{
    QByteArray key;
    QDataStream stream(&key, QDataStream::WriteOnly);
    stream << QByteArray(VELDMAP_VERSION) << QByteArray(qVersion()) << QDir::currentPath() << options.chip
           << options.soft << options.selfCheck << options.accepted << options.single << options.output.base
           << options.output.hasCommonBase << options.output.mostBytes
           << (options.output.list.isEmpty() && options.output.depfile.isEmpty());
    for (const WantedOutput &output : wanted)
        stream << static_cast<qint32>(output.output) << output.directory;
    for (const QString &file : programFiles())
        stream << stampOf(file);
    return key;
}

/// Deletes the oldest records in \a directory when there are many.
void removeOldRecords(const QString &directory)
{
    constexpr qsizetype kMost = 64;
    const QFileInfoList files = QDir(directory).entryInfoList({u"build-*"_s}, QDir::Files, QDir::Time); // newest first
    for (qsizetype at = kMost; at < files.size(); ++at)
        QFile::remove(files[at].filePath());
}

} // namespace

BuildRecord::BuildRecord(const Options &options, const std::vector<WantedOutput> &wanted) : m_begin(stampTime())
{
    const QString directory = recordDirectory();
    if (directory.isEmpty() || m_begin == 0)
        return;
    // What the program is belongs to the record, but not to its name: a newer program's record replaces an older one's.
    QByteArray name;
    QDataStream stream(&name, QDataStream::WriteOnly);
    stream << QDir::currentPath() << options.chip << options.soft;
    for (const WantedOutput &output : wanted)
        stream << static_cast<qint32>(output.output) << output.directory;
    m_key = keyOf(options, wanted);
    m_file = directory + "/build-"_L1 +
             QString::fromLatin1(QCryptographicHash::hash(name, QCryptographicHash::Sha1).toHex());
}

bool BuildRecord::isCurrent()
{
    QFile file(m_file);
    if (m_file.isEmpty() || !file.open(QIODevice::ReadOnly))
        return false;
    std::vector<FileStamp> stamps;
    if (!takeBytes(file.readAll(), stamps))
        return false;
    for (qsizetype at = 0; at < m_read.read.size(); ++at) {
        if (stampOf(m_read.read[at]) != m_read.stamps[static_cast<std::size_t>(at)])
            return false;
    }
    const auto isThere = [](const QString &path) { return QFileInfo::exists(path); };
    return std::ranges::none_of(m_read.missing, isThere) && stampsOfOthers() == stamps;
}

bool BuildRecord::hasRead(const ReadFiles &files) const
{
    return files.read == m_read.read && files.missing == m_read.missing && files.stamps == m_read.stamps;
}

void BuildRecord::tellFindings(Sink &sink) const
{
    for (const Finding &finding : m_findings)
        sink.take(finding);
}

void BuildRecord::add(const OutputFiles &files)
{
    m_isCertain = m_isCertain && files.isComplete() && files.written.isEmpty() && files.skipped.isEmpty();
    m_outputs += files.unchanged;
    m_copied += files.copied;
}

void BuildRecord::keep(const ReadFiles &files, const QStringList &listed)
{
    m_read = files;
    m_listed = listed;
    const std::vector<FileStamp> others = stampsOfOthers();
    const auto isOld = [this](const FileStamp &stamp) { return stamp.isOlderThan(m_begin); };
    m_isCertain = m_isCertain && !m_file.isEmpty() &&
                  m_read.stamps.size() == static_cast<std::size_t>(m_read.read.size()) &&
                  std::ranges::all_of(m_read.stamps, isOld) && std::ranges::all_of(others, isOld);
    if (!m_isCertain)
        return;
    const QString directory = QFileInfo(m_file).path();
    std::error_code error;
    std::filesystem::create_directories(nativePath(directory), error);
    if (error)
        return;
    writeWholeFile(m_file, toBytes(others), {.keepsSame = true});
    removeOldRecords(directory);
}

std::vector<FileStamp> BuildRecord::stampsOfOthers() const
{
    std::vector<FileStamp> stamps;
    stamps.reserve(static_cast<std::size_t>(m_outputs.size() + m_copied.size()));
    for (const QStringList &paths : {m_outputs, m_copied}) {
        for (const QString &path : paths)
            stamps.push_back(stampOf(path));
    }
    return stamps;
}

QByteArray BuildRecord::toBytes(const std::vector<FileStamp> &stamps) const
{
    QByteArray bytes;
    QDataStream stream(&bytes, QDataStream::WriteOnly);
    stream << kVersion << m_key << m_read.read << m_read.missing << m_outputs << m_copied << m_listed;
    putStamps(stream, m_read.stamps);
    putStamps(stream, stamps);
    putFindings(stream, m_findings);
    QByteArray summed;
    QDataStream(&summed, QDataStream::WriteOnly) << checksumOf(bytes) << bytes;
    return summed;
}

bool BuildRecord::takeBytes(const QByteArray &bytes, std::vector<FileStamp> &stamps)
{
    QByteArray content;
    quint64 checksum = 0;
    QDataStream(bytes) >> checksum >> content;
    if (content.isEmpty() || checksum != checksumOf(content))
        return false;
    QDataStream stream(content);
    quint32 version = 0;
    QByteArray key;
    stream >> version >> key;
    if (version != kVersion || key != m_key)
        return false;
    stream >> m_read.read >> m_read.missing >> m_outputs >> m_copied >> m_listed;
    m_read.stamps = takeStamps(stream);
    stamps = takeStamps(stream);
    m_findings = takeFindings(stream);
    return stream.status() == QDataStream::Ok && m_read.stamps.size() == static_cast<std::size_t>(m_read.read.size());
}

} // namespace cli

} // namespace veldmap
