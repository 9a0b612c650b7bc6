#include "files/directories.h"

#include <QDir>

bool recursiveMkdir(const QString &base, const QString &relative)
{
    const QDir directory(base);
    QString below = relative;
    while (below.startsWith(u'/')) // else it would lead to the root of the file system
        below.remove(0, 1);
    for (qsizetype slash = below.indexOf(u'/'); slash >= 0; slash = below.indexOf(u'/', slash + 1))
        directory.mkdir(below.first(slash));
    if (!below.isEmpty())
        directory.mkdir(below);
    return true;
}
