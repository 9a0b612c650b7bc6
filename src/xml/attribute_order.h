#pragma once

#include <QStringView>

namespace veldmap {

/// The name of the attribute in which loadXMLDocument leaves the order of an element's attributes, since a QDomElement
/// does not keep it. It is no legal name, so no description has it.
constexpr QStringView kAttributeOrder = u" order";

} // namespace veldmap
