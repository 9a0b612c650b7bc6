#include "files/paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <system_error>

using namespace Qt::StringLiterals;

namespace veldmap {

bool liesBelow(const QString &directory, const QString &path)
{
    const QString start = QDir(directory).absolutePath();
    return QDir(path).absolutePath().startsWith(start.endsWith(u'/') ? start : start + u'/');
}

bool leadsBelow(const QString &directory, const QString &path)
{
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path start = fs::weakly_canonical(nativePath(directory), error);
    const fs::path end = fs::weakly_canonical(nativePath(path), error);
    return !error && std::mismatch(start.begin(), start.end(), end.begin(), end.end()).first == start.end();
}

QString commonDirectory(const QStringList &paths)
{
    QStringList common;
    for (qsizetype at = 0; at < paths.size(); ++at) {
        const QStringList names = QFileInfo(QDir::cleanPath(paths[at])).absolutePath().split(u'/', Qt::SkipEmptyParts);
        if (at == 0)
            common = names;
        const auto end = std::mismatch(common.begin(), common.end(), names.begin(), names.end()).first;
        common.resize(end - common.begin());
    }
    const bool startsAtRoot = !paths.isEmpty() && QFileInfo(paths.first()).absolutePath().startsWith(u'/');
    return (startsAtRoot ? u"/"_s : QString()) + common.join(u'/'); // drives have names
}

std::filesystem::path nativePath(const QString &path)
{
#ifdef Q_OS_WIN
    return path.toStdWString();
#else
    return QFile::encodeName(path).toStdString();
#endif
}

QString systemText(int error)
{
    return QString::fromStdString(std::generic_category().message(error));
}

} // namespace veldmap
