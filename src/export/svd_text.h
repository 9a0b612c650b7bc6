#pragma once

#include <QByteArray>

class VMMemoryMap;

namespace veldmap {

class ExportFindings;

/// The instances of \a map as a CMSIS-SVD file of schema 1.3. Several instances of one type are written once and
/// derived from. \a findings learns what the format can't say.
QByteArray svdText(const VMMemoryMap &map, ExportFindings &findings);

} // namespace veldmap
