#include "check/document_checks.h"

namespace veldmap {

void checkDocument(const TagDocument &, const QString &, Sink &) {}

} // namespace veldmap
