#pragma once

#include <QByteArray>

class VMMemoryMap;

namespace veldmap {

class ExportFindings;

/// The instances of \a map as an IP-XACT component (IEEE 1685-2014) with one memory map, in which each is an address
/// block. \a findings learns what the format can't say.
QByteArray ipxactText(const VMMemoryMap &map, ExportFindings &findings);

} // namespace veldmap
