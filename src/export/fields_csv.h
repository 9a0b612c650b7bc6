#pragma once

#include <QByteArray>

class VMMemoryMap;

namespace veldmap {

class ExportFindings;

/// The fields of all registers in the instances of \a map, one a line, for spreadsheets: comma-separated values in
/// UTF-8 as RFC 4180 has them, the names of the columns first. A register without fields, and a memory, has a line of
/// its own. \a findings learns what the format can't say.
QByteArray fieldsCsv(const VMMemoryMap &map, ExportFindings &findings);

} // namespace veldmap
