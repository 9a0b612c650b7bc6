#pragma once

#include "findings/finding.h"
#include "findings/source_text.h"

namespace veldmap {

/// The line of \a source at which \a finding points, with its number, and below it a mark under what is meant: the
/// attribute that the finding speaks of, else the name of the tag; in no more than \a width columns of a terminal.
/// Each ends with a line feed. Empty when the finding has no line or the source does not.
///
///        12 |   <bits name="speed" pos="2:1" acess="rw"/>
///           |                                ^~~~~
///
/// Of an expression the character at which it is wrong is the point of the mark:
///
///        13 |   <var name="SIZE" value="4*WIDHT"/>
///           |                           ~~^~~~~
VELDMAP_EXPORT QString quotation(const Finding &finding, const SourceText &source, int width);

} // namespace veldmap
