#include "files/file_writer.h"

#include "files/paths.h"
#include "text/text_sink.h"

#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_WIN

#include <QSaveFile>

namespace veldmap {

WriteResult writeWholeFile(const QString &path, const QByteArray &content, const WriteOptions &options)
{
    QFile old(path);
    if (options.keepsSame && old.size() == content.size() && old.open(QIODevice::ReadOnly) && old.readAll() == content)
        return {WriteResult::Unchanged, {}, true};
    QSaveFile file(path);
    const bool isOpened = file.open(QIODevice::WriteOnly);
    if (isOpened && file.write(content) == content.size() && file.commit())
        return {WriteResult::Written, {}, true};
    return {WriteResult::Failed, file.errorString(), isOpened};
}

WriteResult writeLargeFile(const QString &path, const TextSource &text, const WriteOptions &options)
{
    struct Whole final : TextSink {
        QByteArray bytes;
        bool take(QByteArrayView piece) override
        {
            bytes.append(piece);
            return true;
        }
    } whole;
    return text(whole) ? writeWholeFile(path, whole.bytes, options) : WriteResult();
}

void removeLeftovers(const QString &) {}

void removeBegunFiles() noexcept {}

} // namespace veldmap

#else

#include "files/begun_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

WriteResult failed(int error, bool isOpened)
{
    return {WriteResult::Failed, systemText(error), isOpened};
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

bool isLink(const QByteArray &path)
{
    struct stat status = {};
    return ::lstat(path.constData(), &status) == 0 && S_ISLNK(status.st_mode);
}

/// Compares a text with what a descriptor reads, up to the first difference.
class Comparison final : public TextSink {
public:
    explicit Comparison(int descriptor) : m_descriptor(descriptor) {}

    bool take(QByteArrayView piece) override
    {
        while (m_isSame && !piece.isEmpty()) {
            const ssize_t count = read(std::min<qsizetype>(piece.size(), sizeof m_bytes));
            m_isSame = count > 0 && std::memcmp(m_bytes, piece.data(), static_cast<std::size_t>(count)) == 0;
            if (m_isSame)
                piece = piece.sliced(count);
        }
        return m_isSame;
    }
    /// Whether there is nothing more to read either.
    bool isAtEnd() { return read(1) == 0; }

private:
    ssize_t read(qsizetype most)
    {
        ssize_t count = 0;
        do
            count = ::read(m_descriptor, m_bytes, static_cast<std::size_t>(most));
        while (count < 0 && errno == EINTR);
        return count;
    }

    int m_descriptor;
    bool m_isSame = true;
    char m_bytes[65536];
};

/// Whether the file \a path holds \a content.
bool holds(const QByteArray &path, const TextSource &content)
{
    const int descriptor = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    Comparison comparison(descriptor);
    const bool isSame = content(comparison) && comparison.isAtEnd();
    ::close(descriptor);
    return isSame;
}

/// Writes to what \a path leads to and keeps it: a device, a pipe, or a file that nothing can take the place of.
WriteResult writeOver(const QByteArray &path, const TextSource &content)
{
    const int descriptor = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor < 0)
        return failed(errno, false);
    int error = writeAll(descriptor, content);
    if (::close(descriptor) != 0 && errno != EINTR && error == 0)
        error = errno;
    return error ? failed(error, true) : WriteResult{WriteResult::Written, {}, true};
}

/// The same of a file, since \a reason is why no other can take its place.
WriteResult writeInPlace(const QByteArray &path, const TextSource &content, int reason)
{
    WriteResult result = writeOver(path, content);
    if (result.outcome == WriteResult::Written)
        result = {WriteResult::InPlace, systemText(reason), true};
    return result;
}

/// Puts a new file in the place of \a target, which is \a old unless that is null.
WriteResult replace(const QByteArray &target, const struct stat *old, const TextSource &content)
{
    const qsizetype slash = target.lastIndexOf('/');
    const auto mayBeInPlace = [old](int error) { return old && (error == EACCES || error == EPERM); };
    BegunFile file;
    if (const int error = file.open(slash < 0 ? "." : slash == 0 ? "/" : target.first(slash)))
        return mayBeInPlace(error) ? writeInPlace(target, content, error) : failed(error, false);
    if (old)
        file.setPermissions(old->st_mode & 07777);
    if (const int error = file.write(content))
        return failed(error, true);
    // In a directory as /tmp only the owner of a file may put another in its place.
    if (const int error = file.moveOver(target))
        return mayBeInPlace(error) ? writeInPlace(target, content, error) : failed(error, true);
    return {WriteResult::Written, {}, true};
}

/// Writes \a content, which has \a size bytes if that is not negative.
WriteResult writeContent(const QString &path, const TextSource &content, qint64 size, const WriteOptions &options)
{
    if (path.isEmpty())
        return {WriteResult::Failed, u"The file has no name"_s};
    QByteArray target = QFile::encodeName(path);
    bool isReplacedLink = false;
    if (isLink(target)) {
        const QString behind = targetOf(path);
        if (behind.isEmpty())
            return failed(ELOOP, false);
        isReplacedLink = !options.linksWithin.isEmpty() && !leadsBelow(options.linksWithin, behind);
        if (!isReplacedLink)
            target = QFile::encodeName(behind);
    }
    struct stat old = {};
    if (isReplacedLink || ::stat(target.constData(), &old) != 0)
        return isReplacedLink || errno == ENOENT ? replace(target, nullptr, content) : failed(errno, false);
    // What is no plain file (a device, a directory) is not replaced, and neither is one that may not be written.
    if (!S_ISREG(old.st_mode))
        return writeOver(target, content);
    if (options.keepsSame && (size < 0 || size == old.st_size) && holds(target, content))
        return {WriteResult::Unchanged, {}, true};
    return ::access(target.constData(), W_OK) == 0 ? replace(target, &old, content) : writeOver(target, content);
}

} // namespace

WriteResult writeWholeFile(const QString &path, const QByteArray &content, const WriteOptions &options)
{
    return writeContent(
        path, [&content](TextSink &sink) { return sink.take(content); }, content.size(), options);
}

WriteResult writeLargeFile(const QString &path, const TextSource &text, const WriteOptions &options)
{
    return writeContent(path, text, -1, options);
}

} // namespace veldmap

#endif
