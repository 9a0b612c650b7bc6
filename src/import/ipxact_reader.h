#pragma once

#include "import/device.h"

#include <memory>

namespace veldmap {

class Sink;
class Tag;

/// The address blocks of an IP-XACT component with \a root, of IEEE 1685-2014 or 1685-2009, as SourceFormat::read. Each
/// is a peripheral.
std::unique_ptr<chip::Device> readIpxact(const Tag &root, const QString &file, Sink &sink);

} // namespace veldmap
