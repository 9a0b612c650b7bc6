#pragma once

#include <QtGlobal>

class VMXMLElement;

namespace veldmap {

/// What a copy of an element would hold.
struct TreeSize {
    qint64 elements = 1; ///< the element, all below it, their bitfields, bitgroups and what these list
    int depth = 1;       ///< levels, the element's own included
    qint64 path = 0;     ///< characters of the names on the way down to the element below it with the most
};

TreeSize treeSizeOf(const VMXMLElement &element);

} // namespace veldmap
