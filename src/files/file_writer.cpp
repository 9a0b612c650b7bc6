#include "files/file_writer.h"

#include "files/paths.h"

#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <system_error>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

bool writeAll(QFile &file, const QByteArray &content, QString &reason)
{
    if (file.write(content) == content.size() && file.flush()) {
        file.close();
        if (file.error() == QFile::NoError)
            return true;
    }
    // A write that comes to its end early sets no error: the disk is full, or the file may not grow further.
    reason = file.error() == QFile::NoError ? u"No room for all of it"_s : file.errorString();
    return false;
}

/// What stands behind the link \a path, and behind links that it leads to, also if nothing is there yet. Empty when the
/// links lead in a circle.
QString targetOf(const QString &path)
{
    constexpr int kMostLinks = 40;
    QString target = path;
    for (int link = 0; link < kMostLinks; ++link) {
        const QFileInfo info(target);
        // The links of /proc name what has no path.
        if (!info.isSymLink() || (info.exists() && !QFileInfo::exists(info.symLinkTarget())))
            return target;
        target = info.symLinkTarget();
    }
    return {};
}

/// Opens a new file beside \a target, under a name that no other file has.
bool openBeside(const QString &target, QFile &file)
{
    constexpr int kTries = 100;
    const qsizetype name = target.lastIndexOf(u'/') + 1;
    for (int number = 0; number < kTries; ++number) {
        file.setFileName(target.first(name) + u'.' + target.sliced(name) + u".%1.tmp"_s.arg(number));
        if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            return true;
        if (!QFileInfo::exists(file.fileName()))
            return false; // it is not the name that stands in the way
    }
    return false;
}

bool writeOver(const QString &target, const QByteArray &content, QString &reason, bool &opened)
{
    QFile file(target);
    opened = file.open(QIODevice::WriteOnly);
    if (!opened) {
        reason = file.errorString();
        return false;
    }
    return writeAll(file, content, reason);
}

/// Moves \a file to \a target, which it replaces.
bool moveOver(const QString &file, const QString &target, QString &reason)
{
    std::error_code error;
    std::filesystem::rename(nativePath(file), nativePath(target), error);
    if (error)
        reason = QString::fromStdString(error.message());
    return !error;
}

} // namespace

bool writeWholeFile(const QString &path, const QByteArray &content, QString &reason, bool *opened)
{
    bool ignored = false;
    bool &isOpened = opened ? *opened : ignored;
    isOpened = false;
    namespace fs = std::filesystem;
    std::error_code error;
    const QString target = targetOf(path);
    if (target.isEmpty()) {
        reason = path.isEmpty() ? u"The file has no name"_s : u"Too many levels of symbolic links"_s;
        return false;
    }
    const fs::file_status status = fs::status(nativePath(target), error);
    // What is no plain file (a device, a directory) is not replaced, and neither is one that may not be written.
    const bool exists = fs::exists(status);
    const bool isReplaceable = fs::is_regular_file(status) && QFileInfo(target).isWritable();
    QFile file;
    if ((exists && !isReplaceable) || !openBeside(target, file))
        return writeOver(target, content, reason, isOpened);
    isOpened = true;
    if (exists)
        fs::permissions(nativePath(file.fileName()), status.permissions(), error);
    const bool isWritten = writeAll(file, content, reason);
    if (isWritten && moveOver(file.fileName(), target, reason))
        return true;
    file.remove();
    // In a directory as /tmp only the owner of a file may put another in its place.
    return isWritten && exists && writeOver(target, content, reason, isOpened);
}

} // namespace veldmap
