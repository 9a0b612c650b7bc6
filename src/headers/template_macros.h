#pragma once

#include <QString>

class VMXMLElement;

namespace veldmap {

/// The bitfield macros of the template \a element, under its own name. The C and the assembly header of a file carry
/// the same ones. Text: headers/bitfield_macros.cpp.
QString templateMacros(const VMXMLElement &element);

} // namespace veldmap
