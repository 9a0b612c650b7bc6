#include "loading/memory_map_loader.h"

#include "loading/archive_loader.h"
#include "model/root_archive.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

VMRootArchive *VMMemoryMapLoader::loadRootArchiveFromFile(VMMemoryMap *map, const QString &path, VMMessageCallback log,
                                                          VMMessageCallback error, VMMessageCallback warning, bool chip)
{
    callbacks = {log, error, warning};
    if (path.isEmpty()) {
        LogMessage(chip ? u"No XML Chip to Load."_s : u"No XML Soft to Load."_s);
        return nullptr;
    }
    const QFileInfo file(path);
    basePath = file.absolutePath();
    auto root = std::make_unique<VMRootArchive>(map, file.baseName());
    XMDOpenError status = XMDOpenSuccess;
    if (!VMArchiveLoader().loadArchiveFromFile(path, file.fileName(), basePath, root.get(), log, error, warning, true,
                                               status))
        return nullptr;
    LogMessage((chip ? u"Chip %1 loaded."_s : u"Soft %1 loaded."_s).arg(file.baseName()));
    return root.release();
}

void VMMemoryMapLoader::LogMessage(const QString &message) const
{
    veldmap::sendMessage(callbacks.log, message);
}

void VMMemoryMapLoader::ErrorMessage(const QString &message) const
{
    veldmap::sendMessage(callbacks.error, message);
}

void VMMemoryMapLoader::WarningMessage(const QString &message) const
{
    veldmap::sendMessage(callbacks.warning, message);
}
