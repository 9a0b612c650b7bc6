#pragma once

#include "findings/finding.h"
#include "xml/tag_document.h"

namespace veldmap {

/// Tells what is wrong with the words of a document: attributes and values that its tags do not know, names that have
/// to be changed, numbers that are cut, texts that do harm in what is generated. The places of what is told have no
/// file.
void checkDocument(const TagDocument &document, Sink &sink);

} // namespace veldmap
