#include "common/file_writer.h"

#include <QDir>
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
    reason = file.errorString();
    return false;
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
    std::filesystem::rename(QFile::encodeName(file).toStdString(), QFile::encodeName(target).toStdString(), error);
    if (error)
        reason = QString::fromStdString(error.message());
    return !error;
}

} // namespace

bool writeWholeFile(const QString &path, const QByteArray &content, QString &reason, bool *opened)
{
    bool ignored = false;
    bool &isOpened = opened ? *opened : ignored;
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path asked = QFile::encodeName(path).toStdString();
    fs::file_status status = fs::symlink_status(asked, error);
    QString target = path;
    if (fs::is_symlink(status)) { // what is meant stands behind it, and behind links that it leads to
        status = fs::status(asked, error);
        target = fs::exists(status) ? QFileInfo(path).canonicalFilePath() : QFileInfo(path).symLinkTarget();
    }
    // What is no plain file (a device, a directory) is not replaced, and neither is one that may not be written.
    const bool exists = fs::exists(status);
    const bool isReplaceable = fs::is_regular_file(status) && QFileInfo(target).isWritable();
    QFile file;
    if ((exists && !isReplaceable) || !openBeside(target, file))
        return writeOver(target, content, reason, isOpened);
    isOpened = true;
    if (exists)
        fs::permissions(QFile::encodeName(file.fileName()).toStdString(), status.permissions(), error);
    if (writeAll(file, content, reason) && moveOver(file.fileName(), target, reason))
        return true;
    file.remove();
    return false;
}

bool liesBelow(const QString &directory, const QString &path)
{
    return QDir(path).absolutePath().startsWith(QDir(directory).absolutePath() + u'/');
}

} // namespace veldmap
