#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>

class VMMemoryMap;
class VMXMLElement;

namespace veldmap {

class Sink;

/// The element that \a path names in \a map. Null when there is none; \a sink then hears how far the path leads. May
/// create an element as VMMemoryMap::getElementFromPath does.
VELDMAP_EXPORT VMXMLElement *findElement(const VMMemoryMap &map, const QString &path, Sink &sink);

} // namespace veldmap
