#pragma once

#include "model/variables.h"

class QDomElement;

/// The text of a `comment` tag on one line, with its markup and the entities &amp;, &lt; and &gt;; "<br>" is a line
/// break.
VELDMAP_EXPORT QString readCommentFromCommentTag(const QDomElement &tag);

/// The text of a `cjoker` tag with its lines and blanks, entities decoded, and a line feed at its end.
VELDMAP_EXPORT QString readCJokerFromCommentTag(const QDomElement &tag);

/// \a name with every character but letters A to Z, a to z, digits and underscores as an underscore.
VELDMAP_EXPORT QString regularizeVariableName(const QString &name);

/// A new variable that marks a place in a variable list, where generators print an empty line. The counter in its name
/// is one for the process, so loads do not run in parallel.
VELDMAP_EXPORT VMIntVar generateSpacer();
