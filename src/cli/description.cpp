#include "cli/description.h"

#include "cli/program_rules.h"
#include "cli/session.h"
#include "files/file_reader.h"
#include "files/paths.h"
#include "findings/limits.h"
#include "import/import.h"
#include "loading/load.h"
#include "loading/rules.h"
#include "model/root_archive.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <cerrno>
#include <cstdio>
#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

const QString kInputName = u"<stdin>"_s;

/// Passes findings on, and keeps in the system's words why the first file that can't be opened can't.
class OpeningSink final : public Sink {
public:
    explicit OpeningSink(Sink &next) : m_next(next) {}

    void take(const Finding &finding) override
    {
        if (finding.rule->id == veldmap::rules::fileNotOpened.id && reason.isEmpty())
            reason = finding.note;
        m_next.take(finding);
    }

    QString reason;

private:
    Sink &m_next;
};

/// Why the file \a path did not load, which told no error; \a notOpened is why it could not be opened, if so.
QString whyNotLoaded(const QString &path, const QString &notOpened)
{
    if (QFileInfo(path).isDir()) // for which Qt has words of its own
        return systemText(EISDIR);
    return notOpened.isEmpty() ? u"It holds no archive"_s : notOpened;
}

/// Takes the standard input for the root of \a options, for which \a messages may have to show lines of it.
void takeInput(LoadOptions &options, Messages &messages)
{
    QFile input;
    if (input.open(stdin, QIODevice::ReadOnly))
        options.root = readAtMost(input, limits::kDocumentBytes + 1);
    if (Explanations *explanations = messages.explanations(); explanations && options.root)
        explanations->give(kInputName, *options.root);
}

/// The bytes of \a path when it is a file of another format that descriptions are made of, else nothing.
std::optional<QByteArray> importableBytes(const QString &path)
{
    constexpr qint64 kHead = 64 * 1024; // with the licence in front of the first tag
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly) || !isImportable(file.peek(kHead)))
        return std::nullopt;
    return readAtMost(file, limits::kDocumentBytes);
}

VMRootArchive *loadOne(Session &session, const QString &given, bool chip, LoadOptions options)
{
    const bool isInput = given == "-"_L1;
    const QString path = isInput ? kInputName : given;
    if (isInput)
        takeInput(options, session.messages);
    const int errorsBefore = session.messages.errorCount();
    std::optional<QByteArray> foreign = isInput ? std::nullopt : importableBytes(path);
    if (isInput && options.root && isImportable(*options.root))
        foreign = std::exchange(options.root, std::nullopt);
    MadeDescription made;
    if (foreign) {
        const std::optional<Import> import = importDescription(*foreign, path, session.messages);
        if (!import)
            return nullptr;
        made = madeDescription(*import);
        options.made = &made;
    }
    OpeningSink sink(session.messages);
    VMRootArchive *root = loadRoot(session.map, path, chip, sink, options).release(); // the map will own it
    // A file that can't be opened is only a warning of the library, and -q hides it.
    if (!root && session.messages.errorCount() == errorsBefore)
        session.messages.tell(rules::kNotLoaded, {path, whyNotLoaded(path, sink.reason)});
    return root;
}

/// Passes documents on to two who listen.
class TwoListeners final : public DocumentListener {
public:
    TwoListeners(DocumentListener *first, DocumentListener *second) : m_listeners{first, second} {}

    std::unique_ptr<DocumentStudy> study(const TagDocument &document) const override
    {
        auto studies = std::make_unique<Studies>();
        for (std::size_t at = 0; at < m_listeners.size(); ++at) {
            if (m_listeners[at])
                studies->of[at] = m_listeners[at]->study(document);
        }
        return studies;
    }

    void onDocument(const TagDocument &document, const QString &file, const DocumentStudy *study) override
    {
        for (std::size_t at = 0; at < m_listeners.size(); ++at) {
            if (m_listeners[at])
                m_listeners[at]->onDocument(document, file,
                                            study ? static_cast<const Studies *>(study)->of[at].get() : nullptr);
        }
    }

    void onInclude(const Place &include, const QString &file) override
    {
        for (DocumentListener *listener : m_listeners) {
            if (listener)
                listener->onInclude(include, file);
        }
    }

private:
    struct Studies final : DocumentStudy {
        std::array<std::unique_ptr<DocumentStudy>, 2> of;
    };

    std::array<DocumentListener *, 2> m_listeners; // null for none
};

/// Loads what \a options name; \a lint may be null. With it, all that is wrong is told.
bool load(const Options &options, Session &session, InstanceParts instances, Lint *lint)
{
    Explanations *explanations = session.messages.explanations();
    TwoListeners listeners(lint, explanations ? &explanations->names() : nullptr);
    const LoadOptions how = {.threads = options.threads,
                             .documents = &listeners,
                             .outlines = instances == InstanceParts::Outlines,
                             .goesOn = lint != nullptr,
                             .files = &session.files,
                             .base = options.output.base,
                             .hasCommonBase = options.output.hasCommonBase};
    VMMemoryMap &map = session.map;
    if (!options.chip.isEmpty())
        map.chipRootArchive = loadOne(session, options.chip, true, how);
    if (!options.soft.isEmpty())
        map.softRootArchive = loadOne(session, options.soft, false, how);
    session.messages.clearProgress();
    return (options.chip.isEmpty() || map.chipRootArchive) && (options.soft.isEmpty() || map.softRootArchive);
}

void tellFindings(const Lint &lint, const LintOptions &options, int threads, Session &session)
{
    constexpr qsizetype kMost = 100; // more than anybody mends before the next run
    FindingList found;
    lint.report(session.map, found, threads);
    const qsizetype most = options.most.value_or(session.messages.hasFormat() ? 0 : kMost);
    const LintSelection selection = selectFindings(found.findings, options.choice, most);
    for (const LintSelection::Told &told : selection.told)
        session.messages.takeLint(told.finding, told.more);
    if (selection.hidden > 0)
        session.messages.tellNote(rules::kMoreFindings, {QString::number(selection.hidden)});
}

} // namespace

bool loadDescriptions(const Options &options, Session &session, InstanceParts instances)
{
    return load(options, session, instances, nullptr);
}

bool loadAndLint(const Options &options, Session &session, InstanceParts instances)
{
    Messages &messages = session.messages;
    messages.setStrict(options.lint.choice.isStrict());
    // Some errors of a load leave a tree all the same, which is as good as ever for who wants to hear nothing else.
    if (!options.lint.isOn)
        return loadDescriptions(options, session, instances) &&
               (!options.lint.choice.isStrict() || messages.errorCount() == 0);
    Lint lint([&](const LintRule &rule) { return options.lint.choice.isOn(rule); });
    const bool isLoaded = load(options, session, instances, &lint);
    // An error of a load that leaves a tree stops nothing, one of lint does.
    const int errorsOfLoad = options.lint.choice.isStrict() ? 0 : messages.errorCount();
    tellFindings(lint, options.lint, options.threads, session);
    return isLoaded && messages.errorCount() == errorsOfLoad;
}

} // namespace veldmap::cli
