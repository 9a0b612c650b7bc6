#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>

/// How comments and names of a description stand in C. No text makes any of these fail.

/// \a comment as C comment lines: each begins with 4 * \a indent blanks and "/// ", and breaks behind the word that
/// reaches column \a width. "<br>" is a line break. The last line has no line feed; an empty comment gives the prefix
/// alone. A comment is never laid out narrower than 40 columns behind its indentation.
VELDMAP_EXPORT QString convertCommentToCComment(const QString &comment, int width, int indent);

/// \a name in lower camel case, as instance pointers use it: MY_REG gives myReg.
VELDMAP_EXPORT QString ESDRConvert(const QString &name);

/// The C type name of the description type \a name: the built-in words in upper case, all others in upper case and
/// ending in "_T".
VELDMAP_EXPORT QString ESDRTypeConvert(const QString &name);
