#include "cli/paths.h"

#include "cli/messages.h"
#include "model/element.h"
#include "model/memory_map.h"

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

/// The longest part of \a path from its begin that names an element; empty when none does, or when it would be long to
/// find.
QString knownPart(const VMMemoryMap &map, QString path)
{
    constexpr int kMostSegments = 64;
    if (path.count(u'.') > kMostSegments)
        return {};
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
                         : known.isEmpty()      ? QString()
                                                : u"; it leads as far as %1"_s.arg(known);
    constexpr qsizetype kShown = 200; // characters of a path that may have millions
    printError(
        u"No element has the path %1%2."_s.arg(path.size() > kShown ? path.first(kShown) + u"..."_s : path, hint));
    return nullptr;
}

} // namespace veldmap::cli
