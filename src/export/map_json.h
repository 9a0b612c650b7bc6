#pragma once

#include <QByteArray>

class VMMemoryMap;

namespace veldmap {

class ExportFindings;

/// The version of the format that mapJson() writes: the schema has it too. A format in which something is gone or means
/// something else has a new one; what is added has not.
constexpr int kMapJsonVersion = 1;

/// The instances of \a map as other programs want them, in UTF-8: each register at its absolute address, one a line,
/// with its fields. schema/map.schema.json says what may stand there.
QByteArray mapJson(const VMMemoryMap &map, ExportFindings &findings);

} // namespace veldmap
