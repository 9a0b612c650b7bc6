// Loads any bytes as a description and makes all text of what was loaded.

#include "loading/memory_map_loader.h"
#include "model/archive.h"
#include "model/memory_map.h"
#include "model/root_archive.h"

#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <fstream>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("soc.xml"));
    std::ofstream(path.toStdString(), std::ios::binary)
        .write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(size));

    VMMemoryMap map;
    map.chipRootArchive = VMMemoryMapLoader().loadRootArchiveFromFile(&map, path, nullptr, nullptr, nullptr, true);
    if (!map.chipRootArchive)
        return 0;
    for (const VMXMLArchive *archive : map.chipRootArchive->xmlArchives) {
        archive->c_content();
        archive->asm_content();
        archive->getAllIncludedVariables();
    }
    // A page has some hundred times the text of its part of the menu.
    constexpr qsizetype kMostMenu = 1024 * 1024;
    if (map.chipRootArchive->treenode_serialize().size() < kMostMenu) {
        for (const auto &instance : map.chipRootArchive->instances)
            instance->html_serialize(0);
    }
    return 0;
}
