#include "files/begun_file.h"

#include <QFile>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace veldmap {

namespace {

constexpr char kPrefix[] = ".veldmap-";
constexpr char kSuffix[] = ".tmp";

/// Set when the process ends: no file is begun any more.
std::atomic<bool> isEnding = false;

bool isNameOfBegun(const QByteArray &name)
{
    return name.startsWith(kPrefix) && name.endsWith(kSuffix);
}

/// Whether \a descriptor is the file that \a path leads to now.
bool isAt(const QByteArray &path, int descriptor)
{
    struct stat opened = {};
    struct stat there = {};
    return ::fstat(descriptor, &opened) == 0 && ::lstat(path.constData(), &there) == 0 &&
           opened.st_dev == there.st_dev && opened.st_ino == there.st_ino;
}

/// Writes what it takes.
class Descriptor final : public TextSink {
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}

    bool take(QByteArrayView piece) override
    {
        while (m_error == 0 && !piece.isEmpty()) {
            const ssize_t written = ::write(m_descriptor, piece.data(), static_cast<std::size_t>(piece.size()));
            if (written > 0)
                piece = piece.sliced(written);
            else if (written == 0)
                m_error = ENOSPC;
            else if (errno != EINTR)
                m_error = errno;
        }
        return m_error == 0;
    }
    /// Why it takes no more; 0 as long as it does.
    int error() const { return m_error; }

private:
    int m_descriptor;
    int m_error = 0;
};

} // namespace

// What removeBegunFiles() looks at, in memory that needs no lock and no allocation. A file that finds no slot free is
// removed with the leftovers.
struct BegunFile::Slot {
    static constexpr std::size_t kLongestPath = 4096;
    enum State { Free, Opening, Open };
    std::atomic<State> state = Free;
    char path[kLongestPath] = {};
};
BegunFile::Slot BegunFile::table[16];

BegunFile::~BegunFile()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    if (!m_path.isEmpty())
        ::unlink(m_path.constData());
    forget();
}

void BegunFile::forget()
{
    m_path.clear();
    if (m_slot)
        m_slot->state = Slot::Free;
    m_slot = nullptr;
}

int BegunFile::open(const QByteArray &directory)
{
    static std::atomic<unsigned> next = 0;
    constexpr int kTries = 1000; // more than other processes of our number can have left here
    const QByteArray start = directory + '/' + kPrefix + QByteArray::number(static_cast<qint64>(::getpid())) + '-';
    int error = EEXIST;
    for (int count = 0; count < kTries && (error == EEXIST || error == EWOULDBLOCK); ++count)
        error = tryOpen(start + QByteArray::number(next++) + kSuffix);
    return error;
}

int BegunFile::tryOpen(const QByteArray &path)
{
    for (Slot &slot : table) {
        Slot::State expected = Slot::Free;
        if (path.size() < static_cast<qsizetype>(Slot::kLongestPath) &&
            slot.state.compare_exchange_strong(expected, Slot::Opening)) {
            std::strcpy(slot.path, path.constData());
            m_slot = &slot;
            break;
        }
    }
    while (isEnding)
        ::pause();
    constexpr mode_t kForAll = 0666; // less what the user's mask takes away
    m_descriptor = ::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kForAll);
    if (m_descriptor < 0) {
        const int error = errno;
        forget();
        return error;
    }
    if (m_slot)
        m_slot->state = Slot::Open;
    m_path = path;
    // Whoever looks for leftovers may have been faster. A file system without locks has nobody who removes files.
    if ((::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) || !isAt(path, m_descriptor)) {
        ::close(m_descriptor);
        m_descriptor = -1;
        forget();
        return EWOULDBLOCK;
    }
    return 0;
}

void BegunFile::setPermissions(mode_t mode)
{
    ::fchmod(m_descriptor, mode); // which some file systems do not have
}

int BegunFile::write(const TextSource &content)
{
    if (const int error = writeAll(m_descriptor, content))
        return error;
    // Some file systems tell at the end only. The lock stays until all descriptors are closed.
    const int copy = ::dup(m_descriptor);
    return copy >= 0 && ::close(copy) != 0 ? errno : 0;
}

int BegunFile::moveOver(const QByteArray &target)
{
    if (::rename(m_path.constData(), target.constData()) != 0)
        return errno;
    forget();
    return 0;
}

int writeAll(int descriptor, const TextSource &content)
{
    Descriptor sink(descriptor);
    if (content(sink))
        return 0;
    return sink.error() ? sink.error() : ECANCELED;
}

void removeBegunFiles() noexcept
{
    isEnding = true;
    constexpr int kPatience = 100; // milliseconds; the handler may have interrupted the very thread that opens
    constexpr timespec kMillisecond = {0, 1000000};
    for (BegunFile::Slot &slot : BegunFile::table) {
        for (int waited = 0; slot.state == BegunFile::Slot::Opening && waited < kPatience; ++waited)
            ::nanosleep(&kMillisecond, nullptr);
        if (slot.state != BegunFile::Slot::Free)
            ::unlink(slot.path);
    }
}

void removeLeftovers(const QString &path)
{
    const QByteArray directory = QFile::encodeName(path);
    DIR *const entries = ::opendir(directory.constData());
    if (!entries)
        return;
    QByteArrayList names;
    while (const dirent *entry = ::readdir(entries)) {
        if (isNameOfBegun(entry->d_name))
            names += entry->d_name;
    }
    ::closedir(entries);
    for (const QByteArray &name : std::as_const(names)) {
        const QByteArray file = directory + '/' + name;
        const int descriptor = ::open(file.constData(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (descriptor < 0)
            continue;
        if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0 && isAt(file, descriptor))
            ::unlink(file.constData());
        ::close(descriptor);
    }
}

} // namespace veldmap
