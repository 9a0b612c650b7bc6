#pragma once

#include "loading/document.h"
#include "xml/tag_document.h"

namespace veldmap {

/// Opens the description at \a path and reads its tags into \a document; 0, 1 or 3 of XMDOpenError, with the messages
/// of loadXMLDocument.
XMDOpenError loadTags(const QString &path, TagDocument &document, const Callbacks &callbacks, bool openFailureIsError);

} // namespace veldmap
