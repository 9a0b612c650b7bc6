#pragma once

#include "findings/refusal.h"
#include <veldmap/veldmap_export.h>

#include <QByteArray>

namespace veldmap {

/// By how many bytes a container may be larger than its document.
constexpr qint64 kContainerOverhead = 26 + 15;

/// Whether \a bytes, the content of a file, are a container and no plain document.
VELDMAP_EXPORT bool isContainer(const QByteArray &bytes);

/// A document that was taken out of its container.
struct Deciphered {
    QByteArray document;
    Refusal error; ///< why \a document could not be taken out
};

/// Takes the document out of the container \a bytes. Refuses a header that the rest of the file belies; a wrong key or
/// damage can't be seen here and gives a document without sense.
Deciphered deciphered(const QByteArray &bytes);

} // namespace veldmap
