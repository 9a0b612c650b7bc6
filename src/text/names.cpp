#include "text/names.h"

#include <algorithm>

QString regularizeVariableName(const QString &name)
{
    if (std::ranges::all_of(name, veldmap::isNameCharacter))
        return name;
    QString legal = name;
    std::ranges::replace_if(
        legal, [](QChar c) { return !veldmap::isNameCharacter(c); }, QChar(u'_'));
    return legal;
}
