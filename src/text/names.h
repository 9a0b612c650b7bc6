#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>

/// Names of descriptions, and what they may be made of.

/// \a name with every character but letters A to Z, a to z, digits and underscores as an underscore.
VELDMAP_EXPORT QString regularizeVariableName(const QString &name);

namespace veldmap {

/// Whether \a character may stand in a name: a letter A to Z or a to z, a digit or an underscore.
inline bool isNameCharacter(QChar character)
{
    const char16_t c = character.unicode();
    return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') || c == u'_';
}

} // namespace veldmap
