#pragma once

#include <veldmap/veldmap_export.h>

#include <QStringList>

namespace veldmap {

/// The one of \a names that \a word most likely means: it differs in case alone, or by few insertions, removals,
/// replacements and swaps of neighbours, about one for three characters. Of equally near ones the first; empty when
/// none is near, or when \a word is longer than anybody types.
VELDMAP_EXPORT QString nearestName(QStringView word, const QStringList &names);

} // namespace veldmap
