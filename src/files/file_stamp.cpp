#include "files/file_stamp.h"

#include <QFile>
#include <QtGlobal>

#ifdef Q_OS_LINUX

#include <ctime>
#include <mutex>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unordered_map>

namespace veldmap {

namespace {

constexpr qint64 kSecond = 1'000'000'000;

qint64 nanoseconds(const timespec &time)
{
    return time.tv_sec * kSecond + time.tv_nsec;
}

/// Whether the file system at \a path takes its times from this machine's clock.
bool hasOwnClock(const char *path)
{
    constexpr unsigned long kLocal[] = {
        0xEF53,     // ext2, ext3, ext4
        0x58465342, // xfs
        0x9123683E, // btrfs
        0xF2F52010, // f2fs
        0x2FC12FC1, // zfs
        0x01021994, // tmpfs
        0x794C7630, // overlayfs
    };
    struct statfs system = {};
    if (::statfs(path, &system) != 0)
        return false;
    for (const unsigned long local : kLocal) {
        if (static_cast<unsigned long>(system.f_type) == local)
            return true;
    }
    return false;
}

/// The same of the device \a device, on which the file \a path lies; each is asked of once.
bool hasOwnClock(dev_t device, const char *path)
{
    static std::mutex mutex;
    static std::unordered_map<dev_t, bool> known;
    const std::lock_guard lock(mutex);
    const auto [entry, isNew] = known.try_emplace(device, false);
    if (isNew)
        entry->second = hasOwnClock(path);
    return entry->second;
}

} // namespace

bool FileStamp::isOlderThan(qint64 time) const
{
    // The kernel's clock for files moves in steps of at most 10 ms. A file system without fractions has steps of 1 s.
    const qint64 step = changed % kSecond == 0 ? 3 * kSecond : kSecond / 20;
    return isFile() && changed > 0 && changed + step < time;
}

FileStamp stampOf(const QString &path)
{
    struct stat status = {};
    const QByteArray name = QFile::encodeName(path);
    if (::stat(name.constData(), &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    return {status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim),
            hasOwnClock(status.st_dev, name.constData()) ? nanoseconds(status.st_ctim) : 0};
}

qint64 stampTime()
{
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return nanoseconds(now);
}

} // namespace veldmap

#else

namespace veldmap {

bool FileStamp::isOlderThan(qint64) const
{
    return false;
}

FileStamp stampOf(const QString &)
{
    return {};
}

qint64 stampTime()
{
    return 0;
}

} // namespace veldmap

#endif
