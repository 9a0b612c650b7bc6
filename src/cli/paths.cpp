#include "cli/paths.h"

#include "cli/messages.h"
#include "model/element.h"
#include "model/memory_map.h"

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

/// The longest part of \a path from its begin that names an element; empty when none does.
QString knownPart(const VMMemoryMap &map, QString path)
{
    while (!path.isEmpty() && !map.getElementFromPath(path))
        path.truncate(qMax(path.lastIndexOf(u'.'), 0));
    return path;
}

} // namespace

VMXMLElement *findElement(const VMMemoryMap &map, const QString &path)
{
    VMXMLElement *found = map.getElementFromPath(path);
    if (found)
        return found;
    const QString known = knownPart(map, path);
    const QString hint = !path.startsWith(u'$') ? u"; a path begins with '$' and the name of an instance"_s
                         : known.isEmpty()      ? u"; no instance has its first name"_s
                                                : u"; it leads as far as %1"_s.arg(known);
    printError(u"No element has the path %1%2."_s.arg(path, hint));
    return nullptr;
}

} // namespace veldmap::cli
