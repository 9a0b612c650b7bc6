#pragma once

#include <QByteArray>

namespace veldmap {

/// The text of headers/types/veldmap/types.h, which defines the words that generated headers use. The build makes the
/// source from that file.
QByteArray typesText();

} // namespace veldmap
