#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>

class QDomElement;

/// The text of a `comment` tag on one line, with its markup and the entities &amp;, &lt; and &gt;; "<br>" is a line
/// break.
VELDMAP_EXPORT QString readCommentFromCommentTag(const QDomElement &tag);

/// The text of a `cjoker` tag with its lines and blanks, entities decoded, and a line feed at its end.
VELDMAP_EXPORT QString readCJokerFromCommentTag(const QDomElement &tag);
