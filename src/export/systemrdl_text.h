#pragma once

#include <QByteArray>

class VMMemoryMap;

namespace veldmap {

class ExportFindings;

/// The instances of \a map as SystemRDL 2.0: an address map for each type, and one of the whole with the instances.
/// \a findings learns what the format can't say.
QByteArray systemRdlText(const VMMemoryMap &map, ExportFindings &findings);

} // namespace veldmap
