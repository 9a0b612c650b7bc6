#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>

/// Makes the directory \a relative below the directory \a base, level by level; slashes in front of it count for
/// nothing. Always true: a directory that could not be made shows when a file in it can't be opened.
VELDMAP_EXPORT bool recursiveMkdir(const QString &base, const QString &relative);
