#pragma once

#include <QString>

class VMMemoryMap;
class VMXMLElement;

namespace veldmap::cli {

/// The element that \a path names in \a map, or null with an error told that says how far the path leads.
VMXMLElement *findElement(const VMMemoryMap &map, const QString &path);

} // namespace veldmap::cli
