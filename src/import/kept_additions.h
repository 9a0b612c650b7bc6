#pragma once

#include "import/import.h"

namespace veldmap {

/// Where a report is.
inline const QString kImportReport = QStringLiteral("IMPORT.md");

/// Puts what a person added to the description in \a directory, which an earlier import wrote, into the files of
/// \a import: comments of the document such as those of waivers, comments of elements that have none of the source, and
/// numbers that no import made. \a sink hears what has no place any more.
VELDMAP_EXPORT void keepAdditions(const QString &directory, Import &import, Sink &sink);

/// What the report says for keepAdditions(): what in the files of \a import no person added.
QString madeTags(const Import &import);

} // namespace veldmap
