#pragma once

#include <veldmap/veldmap_export.h>

#include <QByteArray>
#include <QJsonObject>
#include <QString>

class VMMemoryMap;
class VMXMLElement;

namespace veldmap {

class TextSink;

/// The loaded tree of \a map as one JSON object on one line, in UTF-8.
VELDMAP_EXPORT QByteArray treeJson(const VMMemoryMap &map);

/// Gives \a sink the same text in pieces, as it is made; false when the sink has not taken all of it.
VELDMAP_EXPORT bool writeTreeJson(const VMMemoryMap &map, TextSink &sink);

/// \a element alone, without the elements inside it. A bitfield has its path and address besides.
VELDMAP_EXPORT QJsonObject elementJson(const VMXMLElement &element);

/// The word for the kind of \a element: "register32", "struct", ...
VELDMAP_EXPORT QString kindOf(const VMXMLElement &element);

} // namespace veldmap
