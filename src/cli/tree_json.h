#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

class VMMemoryMap;
class VMXMLElement;

namespace veldmap::cli {

/// The loaded tree of \a map as one JSON object, in UTF-8.
QByteArray jsonOf(const VMMemoryMap &map);

/// \a element alone, without the elements inside it. A bitfield has its path and address besides.
QJsonObject elementJson(const VMXMLElement &element);

/// The word for the kind of \a element: "register32", "struct", ...
QString kindOf(const VMXMLElement &element);

} // namespace veldmap::cli
