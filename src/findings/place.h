#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>

namespace veldmap {

/// Where something stands in a file.
///
/// Lines and columns count as the XML reader counts them; for a tag they are those behind the ">" of its start tag.
/// A line of 0 means the file as a whole; an empty file means no place at all.
struct Place {
    QString file;      ///< as messages name it
    qint64 line = 0;   ///< from 1
    qint64 column = 0; ///< characters
    qint64 length = 0; ///< characters that are meant, 0 where that is not known

    bool isNull() const { return file.isEmpty(); }
};

} // namespace veldmap
