// Asks a small description for any bytes: as a path, and as what is being typed. What is found must lead back to
// itself.

#include "access/completion.h"
#include "loading/memory_map_loader.h"
#include "model/memory_map.h"
#include "model/pointer.h"
#include "model/root_archive.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace {

constexpr char kDescription[] = R"xml(<archive>
    <typedef name="node"><ptr name="next" type="node"/><uint8 name="data"/></typedef>
    <typedef name="row"><uint16 name="val"/><int8 name="low" count="2"/></typedef>
    <alias name="rows"><instance name="row" type="row" count="4"/></alias>
    <module name="block"><reg name="ctrl" protect="rw"><bits name="enable" pos="0" access="rw"/></reg><hole size="32"/>
        <instance name="table" type="row" count="3"/><ptr name="head" type="node"/><ptr name="list" type="rows"/>
        <struct name="inner" count="2"><bool name="flag" count="2"/></struct></module>
    <instance name="top" type="block" address="0x1000"/><instance name="rows" type="rows" address="0x2000"/>
</archive>)xml";

std::unique_ptr<VMMemoryMap> loadMap()
{
    const QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("soc.xml")));
    if (!file.open(QIODevice::WriteOnly) || file.write(kDescription) < 0)
        std::abort();
    file.close();
    auto map = std::make_unique<VMMemoryMap>();
    map->chipRootArchive =
        VMMemoryMapLoader().loadRootArchiveFromFile(map.get(), file.fileName(), nullptr, nullptr, nullptr, true);
    if (!map->chipRootArchive)
        std::abort();
    return map;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const std::unique_ptr<VMMemoryMap> map = loadMap();
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    map->getCompletionListFromPath(text);
    const VMXMLElement *element = map->getElementFromPath(text);
    // No path names a hole, and the members of a top-level array have one that is none.
    const bool hasPath = element && element->getType() != VMXMLElement::XML_HOLE &&
                         !(element->parent->isArray() && element->parent->isInstance());
    if (hasPath && map->getElementFromPath(element->getPath()) != element)
        std::abort();
    for (const char *pointer : {"$top.head", "$top.list"})
        static_cast<VMPointer *>(map->getElementFromPath(QString::fromUtf8(pointer)))->deletePointedElement();
    return 0;
}
