#pragma once

#include "findings/finding.h"
#include <veldmap/veldmap_export.h>

#include <QList>
#include <QString>

class VMXMLArchive;

namespace veldmap {

/// The header of the functions that read and compose the registers of one file's types.
struct AccessorHeader {
    QString text;
    QList<Finding> findings; ///< types of which functions are left out, as their names are taken
};

/// That of \a archive. Text: headers/accessors.cpp.
VELDMAP_EXPORT AccessorHeader accessorHeaderOf(const VMXMLArchive &archive);

/// Where it lies: beside the C header of \a archive, below the directory of the headers.
VELDMAP_EXPORT QString accessorHeaderName(const VMXMLArchive &archive);

} // namespace veldmap
