// Imports any bytes; what an import gives must load without an error.

#include "import/import.h"
#include "loading/load.h"
#include "model/memory_map.h"
#include "model/root_archive.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace veldmap;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    FindingList refused;
    const std::optional<Import> import = importDescription(bytes, QStringLiteral("chip.svd"), refused);
    if (!import) {
        if (refused.findings.isEmpty())
            std::abort();
        return 0;
    }
    const MadeDescription made = madeDescription(*import);
    VMMemoryMap map;
    FindingList told;
    LoadOptions options;
    options.made = &made;
    map.chipRootArchive = loadRoot(map, QStringLiteral("chip.svd"), true, told, options).release();
    if (!map.chipRootArchive)
        std::abort();
    return 0;
}
