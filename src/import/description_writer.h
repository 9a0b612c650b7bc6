#pragma once

#include "import/device.h"

#include <veldmap/veldmap_export.h>

#include <QByteArray>
#include <QList>

namespace veldmap {

class Sink;

/// A file of a description that was made of a chip's.
struct WrittenFile {
    QString path; ///< below the description's directory
    QByteArray text;
    QList<chip::At>
        sources; ///< for each line, from the first, the place in the source that it tells of; line 0 for none
};

/// The description of \a device as a person would write it: the root "soc.xml" first, the files of peripherals in
/// "periph", and what they share in "common". \a sink hears what was changed, approximated and left out, in the order
/// of the source, with places in it. Equal devices give equal files.
VELDMAP_EXPORT std::vector<WrittenFile> writeDescription(const chip::Device &device, Sink &sink);

} // namespace veldmap
