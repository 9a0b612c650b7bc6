// Loads a description through the installed library and compares it with the header that the build made of it.

#include <veldmap/veldmap.h>

#include <cstdint>

typedef std::uint32_t REG32;
#define KSEG1(address) (address)
#include "led.h"

int main(int argc, char **argv)
{
    VMMemoryMap map;
    map.chipRootArchive = VMMemoryMapLoader().loadRootArchiveFromFile(
        &map, QString::fromLocal8Bit(argc > 1 ? argv[1] : ""), nullptr, nullptr, nullptr, true);
    if (!map.chipRootArchive || map.chipRootArchive->instances.empty())
        return 1;
    const VMXMLElement &led = *map.chipRootArchive->instances.front();
    return led.getBaseAddress() == REG_LED_BASE && led.sizeOf() == sizeof(HWP_LED_T) && LED_ON == 1 << 4 ? 0 : 2;
}
