#include "common/file_writer.h"

#include <QSaveFile>

namespace veldmap {

bool writeWholeFile(const QString &path, const QByteArray &content, QString &reason)
{
    QSaveFile file(path);
    file.setDirectWriteFallback(true);
    if (file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.commit())
        return true;
    reason = file.errorString();
    return false;
}

} // namespace veldmap
