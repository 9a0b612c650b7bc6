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
    QLatin1StringView name;     ///< as messages call it
    QLatin1StringView rootName; ///< of a document's root, without a prefix
    bool usesPrefixes;          ///< of names, such as "spirit:name"; else those of the root's attributes mean nothing
    /// The device that \a root tells of, which messages call \a file. Null when it can't be read, with an error told.
    std::unique_ptr<chip::Device> (*read)(const Tag &root, const QString &file, Sink &sink);
};

/// All of them.
std::span<const SourceFormat> sourceFormats();

/// The format of a document that begins with \a bytes, null when it is none of them. Looks no further than the name of
/// its first tag.
const SourceFormat *sourceFormatOf(const QByteArray &bytes);

/// Reads the device in \a bytes, the content of a file that messages call \a file. Null when it can't be read, with an
/// error told.
std::unique_ptr<chip::Device> readDevice(const QByteArray &bytes, const QString &file, Sink &sink);

} // namespace veldmap
