#pragma once

#include "import/device.h"

#include <QByteArray>

#include <memory>
#include <span>

namespace veldmap {

class Sink;
class Tag;

/// A format that descriptions are made of.
struct SourceFormat {
    QLatin1StringView name;          ///< as messages call it
    bool (*isRoot)(const Tag &root); ///< whether a document with this root is of the format
    /// The device that \a root tells of, which messages call \a file. Null when it can't be read, with an error told.
    std::unique_ptr<chip::Device> (*read)(const Tag &root, const QString &file, Sink &sink);
};

/// All of them.
std::span<const SourceFormat> sourceFormats();

/// The format of a document with \a root, null for none of them.
const SourceFormat *findSourceFormat(const Tag &root);

} // namespace veldmap
