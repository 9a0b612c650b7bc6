#pragma once

#include <QByteArray>
#include <QString>

class VMMemoryMap;
class VMXMLElement;

namespace veldmap::cli {

/// The loaded tree of \a map as one JSON object, in UTF-8.
QByteArray jsonOf(const VMMemoryMap &map);

/// The word for the kind of \a element: "register32", "struct", ...
QString kindOf(const VMXMLElement &element);

} // namespace veldmap::cli
