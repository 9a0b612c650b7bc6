#pragma once

#include <QStringList>

namespace veldmap {

/// More segments than any element's path has. A lookup goes down one call a segment, and copies what follows.
constexpr qsizetype kPathSegments = 8192;

/// The segments of a path; none of an empty one, and none of one that is longer than any element's.
inline QStringList pathSegments(const QString &path)
{
    return path.isEmpty() || path.count(u'.') >= kPathSegments ? QStringList() : path.split(u'.');
}

} // namespace veldmap
