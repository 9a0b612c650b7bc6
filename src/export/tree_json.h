#pragma once

#include <veldmap/veldmap_export.h>

#include <QByteArray>
#include <QJsonObject>
#include <QString>

class VMMemoryMap;
class VMXMLElement;

namespace veldmap {

/// The loaded tree of \a map as one JSON object on one line, in UTF-8.
VELDMAP_EXPORT QByteArray treeJson(const VMMemoryMap &map);

/// \a element alone, without the elements inside it. A bitfield has its path and address besides.
VELDMAP_EXPORT QJsonObject elementJson(const VMXMLElement &element);

/// The word for the kind of \a element: "register32", "struct", ...
VELDMAP_EXPORT QString kindOf(const VMXMLElement &element);

} // namespace veldmap
