#pragma once

#include "findings/finding.h"

#include <QByteArray>

namespace veldmap {

/// Adds to \a finding, which says that the document in \a bytes is not well formed, what its text shows and the words
/// of an XML reader do not: the tag that was never closed, the bytes that are no text, and what to write instead.
///
///     soc.xml:40:10: error: Opening and ending tag mismatch.
///     soc.xml:12:22: note: <module> is opened here and never closed
VELDMAP_EXPORT void explainDocumentFault(const QByteArray &bytes, Finding &finding);

} // namespace veldmap
