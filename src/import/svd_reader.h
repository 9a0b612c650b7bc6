#pragma once

#include "import/device.h"

#include <veldmap/veldmap_export.h>

#include <memory>

namespace veldmap {

class Sink;
class Tag;

/// The device in a CMSIS-SVD document with \a root, as SourceFormat::read.
std::unique_ptr<chip::Device> readSvd(const Tag &root, const QString &file, Sink &sink);

/// The number that \a text is in CMSIS-SVD: decimal, 0x hexadecimal, # or 0b binary, with k, m, g or t behind it.
/// Nothing when it is none, or beyond 64 bits. A binary one may have bits 'x', which become set in \a dontCare.
VELDMAP_EXPORT std::optional<quint64> svdNumber(QStringView text, quint64 *dontCare = nullptr);

} // namespace veldmap
