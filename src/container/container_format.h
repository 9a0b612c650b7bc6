#pragma once

#include "findings/refusal.h"
#include <veldmap/veldmap_export.h>

#include <QByteArray>

namespace veldmap {

/// By how many bytes a container may be larger than its document, its digest left aside.
constexpr qint64 kContainerOverhead = 26 + 15;

/// Whether \a bytes, the content of a file, are a container and no plain document.
VELDMAP_EXPORT bool isContainer(const QByteArray &bytes);

/// A document that was taken out of its container.
struct Deciphered {
    QByteArray document;
    Refusal error;          ///< why \a document could not be taken out
    bool hasDigest = false; ///< its digest, which is gone from \a document, says that nothing has changed
};

/// Takes the document out of the container \a bytes. Refuses a header that the rest of the file belies, and a document
/// that its digest belies. Without a digest, and with a wrong key, what comes out may be without sense.
VELDMAP_EXPORT Deciphered deciphered(const QByteArray &bytes);

} // namespace veldmap
