#include "import/import.h"

#include "cli/commands.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "files/file_reader.h"
#include "files/file_writer.h"
#include "files/paths.h"
#include "findings/limits.h"
#include "import/kept_additions.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <cerrno>
#include <filesystem>
#include <system_error>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

/// The bytes of \a path, "-" for the standard input; nothing, with an error told, when they can't be read.
std::optional<QByteArray> readSource(const QString &path, Messages &messages)
{
    QFile file(path);
    const bool isInput = path == "-"_L1;
    if (!isInput && QFileInfo(path).isDir()) {
        messages.tell(rules::kNotLoaded, {path, systemText(EISDIR)});
        return std::nullopt;
    }
    if (!(isInput ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly))) {
        messages.tell(rules::kNotLoaded, {path, file.errorString()});
        return std::nullopt;
    }
    QByteArray bytes = readAtMost(file, limits::kDocumentBytes);
    if (bytes.size() > limits::kDocumentBytes) {
        messages.tell(rules::kNotLoaded, {path, u"It has more than %1 bytes"_s.arg(limits::kDocumentBytes)});
        return std::nullopt;
    }
    if (bytes.isEmpty()) {
        messages.tell(rules::kNotLoaded, {path, u"It is empty"_s});
        return std::nullopt;
    }
    return bytes;
}

/// Tells of each kind of finding the first few; all are in the report.
void tellFindings(const QList<Finding> &findings, const LintOptions &lint, Messages &messages)
{
    const qsizetype most = lint.most.value_or(1);
    QHash<const Rule *, qsizetype> told;
    QHash<const Rule *, qsizetype> all;
    for (const Finding &finding : findings)
        ++all[finding.rule];
    for (const Finding &finding : findings) {
        const qsizetype number = ++told[finding.rule];
        if (most > 0 && number > most)
            continue;
        const bool isLast = number == most && all[finding.rule] > most;
        messages.takeLint(finding, isLast ? all[finding.rule] - most : 0);
    }
}

class Importing {
public:
    Importing(const Options &options, Messages &messages) : m_options(options), m_messages(messages) {}

    bool write(Import &import)
    {
        const QString &directory = m_options.outputDirectory;
        const QByteArray report = importReport(import).toUtf8();
        if (m_options.update)
            keepAdditions(directory, import, m_messages);
        std::vector<std::pair<QString, QByteArray>> files;
        for (const WrittenFile &file : import.files)
            files.emplace_back(directory + u'/' + file.path, file.text);
        files.emplace_back(directory + u'/' + kImportReport, report);
        if (!m_options.update && !isFree(files))
            return false;
        for (const auto &[path, content] : files)
            writeFile(path, content);
        m_messages.tellNote(rules::kWritten,
                            {QString::number(m_written), QString::number(m_unchanged), QString::number(m_failed)});
        return m_failed == 0;
    }

private:
    /// Whether no file is there that somebody may have changed; else an error is told.
    bool isFree(const std::vector<std::pair<QString, QByteArray>> &files)
    {
        for (const auto &[path, content] : files) {
            QFile file(path);
            if (!file.open(QIODevice::ReadOnly) || readAtMost(file, content.size()) == content)
                continue;
            m_messages.tell(rules::kImportThere, {path});
            return false;
        }
        return true;
    }

    void writeFile(const QString &path, const QByteArray &content)
    {
        std::error_code error;
        std::filesystem::create_directories(nativePath(QFileInfo(path).path()), error);
        const WriteResult result = error ? WriteResult{WriteResult::Failed, systemText(error.value())}
                                         : writeWholeFile(path, content, {.keepsSame = true});
        if (result.outcome == WriteResult::Failed) {
            ++m_failed;
            m_messages.tell(rules::kUnwritten, {path, result.reason});
        } else {
            ++(result.outcome == WriteResult::Unchanged ? m_unchanged : m_written);
        }
    }

    const Options &m_options;
    Messages &m_messages;
    int m_written = 0;
    int m_unchanged = 0;
    int m_failed = 0;
};

} // namespace

ExitStatus importFile(const Options &options, Session &session)
{
    Messages &messages = session.messages;
    const std::optional<QByteArray> bytes = readSource(options.source, messages);
    if (!bytes)
        return kFailed;
    const QString name = options.source == "-"_L1 ? u"<stdin>"_s : options.source;
    std::optional<Import> import = importDescription(*bytes, name, messages);
    if (!import)
        return kFailed;
    tellFindings(import->findings, options.lint, messages);
    if (!Importing(options, messages).write(*import))
        return kFailed;
    return printResult(importSummary(*import), messages) ? kDone : kFailed;
}

} // namespace veldmap::cli
