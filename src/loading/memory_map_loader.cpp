#include "loading/memory_map_loader.h"

#include "files/paths.h"
#include "findings/callback_sink.h"
#include "loading/archive_reader.h"
#include "loading/load.h"
#include "loading/read_ahead.h"
#include "loading/rules.h"
#include "model/archive.h"
#include "model/root_archive.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Files of which the root is given.
class WithRoot final : public DescriptionFiles {
public:
    WithRoot(const QString &path, const QByteArray &root, std::unique_ptr<DescriptionFiles> others)
        : m_path(path), m_root(root), m_others(std::move(others))
    {
    }

    std::unique_ptr<DescriptionFile> read(const FileName &name) override
    {
        return name.path == m_path ? readDescription(m_path, m_root) : m_others->read(name);
    }

private:
    QString m_path;
    QByteArray m_root;
    std::unique_ptr<DescriptionFiles> m_others;
};

/// The files of a description that was made of the file at a path; there are no others.
class MadeFiles final : public DescriptionFiles {
public:
    MadeFiles(const QString &source, const MadeDescription &made, ReadFiles *noted)
        : m_source(source), m_directory(QFileInfo(source).absolutePath()), m_made(made)
    {
        if (noted)
            noted->read += source;
    }

    std::unique_ptr<DescriptionFile> read(const FileName &name) override
    {
        const auto isMeant = [&](const MadeDescription::File &file) {
            return QDir::cleanPath(m_directory + u'/' + file.path) == name.path;
        };
        const auto isRoot = name.path == m_source;
        const auto found = isRoot ? m_made.files.begin() : std::ranges::find_if(m_made.files, isMeant);
        if (found == m_made.files.end()) {
            auto missing = std::make_unique<DescriptionFile>();
            missing->status = XMDOpenUnreadable;
            return missing;
        }
        std::unique_ptr<DescriptionFile> file = readDescription(m_source, found->text);
        if (!isRoot)
            file->told = {};
        file->shownAs = m_source;
        file->document.movePlaces([&](int line) -> std::pair<int, int> {
            const MadeDescription::SourcePosition position = found->lines.value(line - 1);
            return {position.line, position.column};
        });
        return file;
    }

private:
    QString m_source;
    QString m_directory;
    const MadeDescription &m_made;
};

/// Notes what a load reads.
class NotedFiles final : public DescriptionFiles {
public:
    NotedFiles(std::unique_ptr<DescriptionFiles> files, ReadFiles &noted) : m_files(std::move(files)), m_noted(noted) {}

    std::unique_ptr<DescriptionFile> read(const FileName &name) override
    {
        std::unique_ptr<DescriptionFile> file = m_files->read(name);
        if (file->status == XMDOpenUnreadable) {
            m_noted.missing += name.path;
            return file;
        }
        m_noted.read += name.path;
        m_noted.stamps.push_back(file->stamp);
        return file;
    }

private:
    std::unique_ptr<DescriptionFiles> m_files;
    ReadFiles &m_noted;
};

std::unique_ptr<DescriptionFiles> filesFor(const QString &path, const LoadOptions &options)
{
    if (options.made)
        return std::make_unique<MadeFiles>(path, *options.made, options.files);
    std::unique_ptr<DescriptionFiles> files = options.threads > 1
                                                  ? std::make_unique<ReadAhead>(options.threads - 1, options.documents)
                                                  : std::make_unique<DescriptionFiles>();
    if (options.root)
        files = std::make_unique<WithRoot>(path, *options.root, std::move(files));
    return options.files ? std::make_unique<NotedFiles>(std::move(files), *options.files) : std::move(files);
}

/// Lets the relative names of all files of \a root start from where \a options say. They name the same files.
void moveBase(const VMRootArchive &root, const LoadOptions &options)
{
    if (options.base.isEmpty() && !options.hasCommonBase)
        return;
    QString base = QDir(options.base).absolutePath();
    if (options.hasCommonBase) {
        QStringList paths;
        for (const VMXMLArchive *archive : root.xmlArchives)
            paths += archive->getTotalPath();
        base = commonDirectory(paths);
    }
    const QDir directory(base);
    for (VMXMLArchive *archive : root.xmlArchives) {
        archive->relativeFileName = directory.relativeFilePath(archive->getTotalPath());
        archive->basePath = base;
    }
}

} // namespace

std::unique_ptr<VMRootArchive> loadRoot(VMMemoryMap &map, const QString &path, bool chip, Sink &sink,
                                        const LoadOptions &options)
{
    const QString word = chip ? u"Chip"_s : u"Soft"_s;
    if (path.isEmpty()) {
        sink.take(Finding(rules::nothingToLoad, {}, {word}));
        return nullptr;
    }
    const QFileInfo file(path);
    auto root = std::make_unique<VMRootArchive>(&map, file.baseName());
    TreeBuilder builder(root.get());
    const std::unique_ptr<DescriptionFiles> files = filesFor(path, options);
    const FileName name =
        options.root ? FileName{path, path, u"."_s} : FileName{path, file.fileName(), file.absolutePath()};
    ArchiveReader reader(builder, *files, sink);
    reader.setDocumentListener(options.documents);
    if (options.outlines)
        reader.makeOutlines();
    if (options.goesOn)
        reader.goOnAfterErrors();
    XMDOpenError status = XMDOpenSuccess;
    if (!reader.readFile(name, true, status) || (options.goesOn && reader.hasFailed()))
        return nullptr;
    moveBase(*root, options);
    sink.take(Finding(rules::rootLoaded, {}, {word, file.baseName()}));
    return root;
}

} // namespace veldmap

VMRootArchive *VMMemoryMapLoader::loadRootArchiveFromFile(VMMemoryMap *map, const QString &path, VMMessageCallback log,
                                                          VMMessageCallback error, VMMessageCallback warning, bool chip)
{
    callbacks = {log, error, warning};
    if (!path.isEmpty())
        basePath = QFileInfo(path).absolutePath();
    veldmap::CallbackSink sink(callbacks);
    return veldmap::loadRoot(*map, path, chip, sink).release();
}

void VMMemoryMapLoader::LogMessage(const QString &message) const
{
    veldmap::sendText(callbacks.log, message);
}

void VMMemoryMapLoader::ErrorMessage(const QString &message) const
{
    veldmap::sendText(callbacks.error, message);
}

void VMMemoryMapLoader::WarningMessage(const QString &message) const
{
    veldmap::sendText(callbacks.warning, message);
}
