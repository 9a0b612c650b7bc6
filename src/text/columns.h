#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>

/// Padding of generated text to columns, which count from 0.

/// The blanks that carry \a text to \a column, at least one.
VELDMAP_EXPORT QString space_complement_to(const QString &text, int column);

namespace veldmap {

/// The number of blanks that carry a text of \a length characters to \a column, at least one.
inline qsizetype blanksToColumn(qsizetype length, int column)
{
    return length < column ? column - length : 1;
}

} // namespace veldmap
