#include "files/directories.h"

#include <QDir>

bool recursiveMkdir(const QString &base, const QString &relative)
{
    const QDir directory(base);
    for (qsizetype slash = relative.indexOf(u'/'); slash >= 0; slash = relative.indexOf(u'/', slash + 1)) {
        if (slash > 0)
            directory.mkdir(relative.first(slash));
    }
    if (!relative.isEmpty())
        directory.mkdir(relative);
    return true;
}

namespace veldmap {

bool liesBelow(const QString &directory, const QString &path)
{
    return QDir(path).absolutePath().startsWith(QDir(directory).absolutePath() + u'/');
}

} // namespace veldmap
