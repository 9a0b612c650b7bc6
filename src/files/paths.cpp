#include "files/paths.h"

#include <QDir>
#include <QFile>

namespace veldmap {

bool liesBelow(const QString &directory, const QString &path)
{
    return QDir(path).absolutePath().startsWith(QDir(directory).absolutePath() + u'/');
}

std::filesystem::path nativePath(const QString &path)
{
#ifdef Q_OS_WIN
    return path.toStdWString();
#else
    return QFile::encodeName(path).toStdString();
#endif
}

} // namespace veldmap
