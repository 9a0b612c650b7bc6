#pragma once

#include "veldmap_export.h"

#include <QString>

/// Makes the directory \a relative below the directory \a base, level by level. Always true: a directory that could not
/// be made shows when a file in it can't be opened.
VELDMAP_EXPORT bool recursiveMkdir(const QString &base, const QString &relative);

namespace veldmap {

/// Whether \a path, once its ".." are followed, lies below \a directory.
bool liesBelow(const QString &directory, const QString &path);

} // namespace veldmap
