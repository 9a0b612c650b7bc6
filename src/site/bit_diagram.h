#pragma once

#include <QByteArray>

#include <span>

class VMValuable;

namespace veldmap {

class HtmlText;

/// Appends what the diagrams of a page share: the numbers of the bits.
void appendDiagramParts(HtmlText &text);

/// Appends the bits of \a valuable as SVG, 16 in a row, the highest on the left: the names of its fields, who may
/// access them, their reset values. Each name leads to the field's id in \a fieldIds, which are in the order of the
/// fields.
void appendDiagram(HtmlText &text, const VMValuable &valuable, std::span<const QByteArray> fieldIds);

} // namespace veldmap
