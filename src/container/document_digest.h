#pragma once

#include <veldmap/veldmap_export.h>

#include <QByteArray>

namespace veldmap {

/// By how many bytes a digest makes a document larger at most.
constexpr qint64 kLargestDigest = 4 * 128;

/// \a document and behind it a processing instruction with its digest, in the encoding of the document.
VELDMAP_EXPORT QByteArray withDigest(const QByteArray &document);

/// What the end of a document says of the rest.
struct DigestFound {
    enum Kind {
        None,  ///< there is no digest
        Right, ///< there is one, and it is that of what stands before it
        Wrong, ///< there is one, or what is left of one, and something has changed
    };
    Kind kind = None;
    qsizetype documentBytes = 0; ///< before a digest that is right
};

/// Looks for the digest of the document in the first \a length of \a bytes. What lies behind these, the filling of a
/// container, tells of a length that has changed.
DigestFound findDigest(const QByteArray &bytes, qsizetype length);

} // namespace veldmap
