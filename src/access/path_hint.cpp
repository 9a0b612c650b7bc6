#include "access/path_hint.h"

#include "access/access_rules.h"
#include "findings/finding.h"
#include "model/memory_map.h"

using namespace Qt::StringLiterals;

namespace veldmap {

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

Finding noElement(const VMMemoryMap &map, const QString &path)
{
    constexpr qsizetype kShown = 200; // characters of a path that may have millions
    const QString shown = path.size() > kShown ? path.first(kShown) + u"..."_s : path;
    if (!path.startsWith(u'$'))
        return Finding(access_rules::kNoPath, {}, {shown});
    const QString known = knownPart(map, path);
    return known.isEmpty() ? Finding(access_rules::kNoElement, {}, {shown})
                           : Finding(access_rules::kPathEnds, {}, {shown, known});
}

} // namespace

VMXMLElement *findElement(const VMMemoryMap &map, const QString &path, Sink &sink)
{
    VMXMLElement *found = map.getElementFromPath(path);
    if (!found)
        sink.take(noElement(map, path));
    return found;
}

} // namespace veldmap
