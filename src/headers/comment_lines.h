#pragma once

#include <QString>

namespace veldmap {

/// \a comment of a description as lines of C comments, each beginning with "/// " and ending in a line feed, whatever
/// it holds: nothing in it ends the comment, joins it to the line behind it, or makes compilers warn. Nothing for a
/// blank one.
QString commentLines(const QString &comment);

/// \a lines, which are such comments already, made as harmless. Their lengths stay, unless they would go on.
QString safeCommentLines(const QString &lines);

/// \a text as a part of one such line.
QString commentWords(const QString &text);

} // namespace veldmap
