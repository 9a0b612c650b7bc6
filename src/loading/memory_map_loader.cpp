#include "loading/memory_map_loader.h"

#include "findings/callback_sink.h"
#include "loading/archive_reader.h"
#include "loading/load.h"
#include "loading/read_ahead.h"
#include "loading/rules.h"
#include "model/root_archive.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace veldmap {

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
    std::unique_ptr<DescriptionFiles> files =
        options.threads > 1 ? std::make_unique<ReadAhead>(options.threads - 1) : std::make_unique<DescriptionFiles>();
    ArchiveReader reader(builder, *files, sink);
    reader.setDocumentListener(options.documents);
    if (options.goesOn)
        reader.goOnAfterErrors();
    XMDOpenError status = XMDOpenSuccess;
    if (!reader.readFile({path, file.fileName(), file.absolutePath()}, true, status) ||
        (options.goesOn && reader.hasFailed()))
        return nullptr;
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
