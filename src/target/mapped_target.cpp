#include "files/paths.h"
#include "target/kinds.h"
#include "target/uio_maps.h"
#include "text/lines.h"

#include <QFile>

#include <cerrno>
#include <csetjmp>
#include <csignal>
#include <fcntl.h>
#include <mutex>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

// Memory that this machine can map: mem, which is /dev/mem; mem:/dev/uioN; mem:FILE or mem:FILE@ADDRESS, a file whose
// first byte lies at ADDRESS, such as one below /dev/shm.
//
// Each access is one load or store of the register's width. One page is mapped at a time.

namespace veldmap {

namespace {

/// Where to go when the bus refuses an access of this thread.
thread_local sigjmp_buf *refusedAccess = nullptr;
struct sigaction otherHandler = {};

void takeBusError(int signal)
{
    if (refusedAccess)
        ::siglongjmp(*refusedAccess, 1);
    // The fault of somebody else: as if we had never been here.
    ::sigaction(signal, &otherHandler, nullptr);
    ::raise(signal);
}

/// While it lives, a bus error in the thread's access is no end of the program. One thread at a time has one.
class BusErrorsTaken {
public:
    BusErrorsTaken() : m_lock(theMutex())
    {
        struct sigaction action = {};
        action.sa_handler = takeBusError;
        action.sa_flags = SA_NODEFER; // the handler is left by a jump
        ::sigemptyset(&action.sa_mask);
        ::sigaction(SIGBUS, &action, &otherHandler);
    }
    ~BusErrorsTaken() { ::sigaction(SIGBUS, &otherHandler, nullptr); }
    BusErrorsTaken(const BusErrorsTaken &) = delete;
    BusErrorsTaken &operator=(const BusErrorsTaken &) = delete;

private:
    static std::mutex &theMutex()
    {
        static std::mutex mutex;
        return mutex;
    }

    const std::lock_guard<std::mutex> m_lock;
};

/// Does \a access, a single load or store; false when the bus refuses it.
template <typename Access>
bool tryAccess(const Access &access)
{
    sigjmp_buf place;
    if (::sigsetjmp(place, 0) != 0) {
        refusedAccess = nullptr;
        return false;
    }
    refusedAccess = &place;
    access();
    refusedAccess = nullptr;
    return true;
}

template <typename Word>
quint32 load(const std::byte *from)
{
    return *reinterpret_cast<const volatile Word *>(from);
}

template <typename Word>
void store(std::byte *to, quint32 value)
{
    *reinterpret_cast<volatile Word *>(to) = static_cast<Word>(value);
}

/// What is mapped, and where it lies in the address space of the chip.
struct MappedPlace {
    QString path;
    QList<UioMap> maps; ///< of a device with several; else one
    bool isDevice = false;
};

class MappedTarget final : public PlacedTarget {
public:
    explicit MappedTarget(MappedPlace place) : m_place(std::move(place)) {}
    ~MappedTarget() override { close(); }

    QString description() const override { return m_place.path; }

    TargetAnswer connect() override
    {
        close();
        const QByteArray name = QFile::encodeName(m_place.path);
        m_descriptor = ::open(name.constData(), O_RDWR | O_SYNC | O_CLOEXEC);
        m_isReadOnly = m_descriptor < 0 && (errno == EACCES || errno == EROFS);
        if (m_isReadOnly)
            m_descriptor = ::open(name.constData(), O_RDONLY | O_SYNC | O_CLOEXEC);
        return m_descriptor < 0 ? noAnswer(systemText(errno)) : TargetAnswer();
    }

    TargetAnswer read(quint32 address, std::span<std::byte> bytes, int width) override
    {
        return access(address, std::ssize(bytes), width, [&](std::byte *at, qsizetype index) {
            storeNumber(width == 1   ? load<quint8>(at)
                        : width == 2 ? load<quint16>(at)
                                     : load<quint32>(at),
                        &bytes[std::size_t(index)], width);
        });
    }

    TargetAnswer write(quint32 address, std::span<const std::byte> bytes, int width) override
    {
        if (m_isReadOnly)
            return notHere(u"%1 can only be read"_s.arg(m_place.path));
        return access(address, std::ssize(bytes), width, [&](std::byte *at, qsizetype index) {
            const quint32 value = numberFrom(&bytes[std::size_t(index)], width);
            width == 1 ? store<quint8>(at, value) : width == 2 ? store<quint16>(at, value) : store<quint32>(at, value);
        });
    }

private:
    /// Does \a act with each word of the \a size bytes from \a address on: where it is mapped, and its place in them.
    template <typename Act>
    TargetAnswer access(quint32 address, qint64 size, int width, const Act &act)
    {
        if (m_descriptor < 0)
            return noAnswer(u"%1 is not open"_s.arg(m_place.path));
        const BusErrorsTaken guard;
        for (qint64 index = 0; index < size; index += width) {
            std::byte *at = nullptr;
            if (TargetAnswer answer = find(address + index, width, at); !answer)
                return answer;
            if (!tryAccess([&] { act(at, qsizetype(index)); }))
                return notHere(u"the bus refuses 0x%1"_s.arg(hex8(address + quint32(index))));
        }
        return {};
    }

    /// Where the \a width bytes at \a address are mapped.
    TargetAnswer find(qint64 address, int width, std::byte *&at)
    {
        for (const UioMap &map : m_place.maps) {
            if (address >= map.address && address + width <= map.address + sizeOf(map))
                return mapPage(map.fileOffset, map.displacement + address - map.address, at);
        }
        return notHere(u"0x%1 does not lie in %2"_s.arg(hex8(quint32(address)), m_place.path));
    }

    /// A file may become shorter at any time, and what lies behind its end can't be touched.
    qint64 sizeOf(const UioMap &map) const
    {
        struct stat status = {};
        if (m_place.isDevice || ::fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode))
            return map.size;
        return qMin<qint64>(map.size, status.st_size);
    }

    /// Maps the page of the byte \a offset behind \a fileOffset, unless it is mapped already. The number of a device's
    /// map stands in the offset of its file, in pages, so that only its first page can be reached by that alone.
    TargetAnswer mapPage(qint64 fileOffset, qint64 offset, std::byte *&at)
    {
        const qint64 page = offset / m_pageSize * m_pageSize;
        const bool isUio = m_place.isDevice && m_place.maps.size() > 0 && m_place.maps.front().isNumbered;
        const qint64 size = isUio ? page + m_pageSize : m_pageSize;
        const qint64 begin = isUio ? fileOffset : fileOffset + page;
        if (!m_page || m_begin != begin || m_size < size) {
            unmap();
            void *mapped = ::mmap(nullptr, std::size_t(size), PROT_READ | (m_isReadOnly ? 0 : PROT_WRITE), MAP_SHARED,
                                  m_descriptor, off_t(begin));
            if (mapped == MAP_FAILED)
                return notHere(u"%1 can't be mapped: %2"_s.arg(m_place.path, systemText(errno)));
            m_page = static_cast<std::byte *>(mapped);
            m_begin = begin;
            m_size = size;
        }
        at = m_page + (isUio ? offset : offset - page);
        return {};
    }

    void unmap()
    {
        if (m_page)
            ::munmap(m_page, std::size_t(m_size));
        m_page = nullptr;
    }

    void close()
    {
        unmap();
        if (m_descriptor >= 0)
            ::close(m_descriptor);
        m_descriptor = -1;
    }

    const MappedPlace m_place;
    const qint64 m_pageSize = ::sysconf(_SC_PAGESIZE);
    int m_descriptor = -1;
    bool m_isReadOnly = false;
    std::byte *m_page = nullptr;
    qint64 m_begin = 0; // of what is mapped, in the file
    qint64 m_size = 0;
};

} // namespace

std::unique_ptr<PlacedTarget> makeMappedTarget(const TargetWord &word)
{
    constexpr qint64 kAddressSpace = Q_INT64_C(1) << 32;
    const std::optional<PlaceAndAddress> place = placeAndAddress(word.details, 0);
    if (!place || place->address % 4 != 0)
        return refuse(word, u"memory is mem:PATH or mem:PATH@ADDRESS, a multiple of 4"_s);
    MappedPlace mapped;
    mapped.path = place->place.isEmpty() ? u"/dev/mem"_s : place->place;
    mapped.isDevice = mapped.path.startsWith("/dev/"_L1) && !mapped.path.startsWith("/dev/shm/"_L1);
    mapped.maps = {UioMap{place->address, kAddressSpace - place->address}};
    if (mapped.path.startsWith("/dev/uio"_L1)) {
        mapped.maps = uioMapsOf("/sys/class/uio/"_L1 + mapped.path.sliced(5),
                                word.details.contains(u'@') ? std::optional(place->address) : std::nullopt);
        if (mapped.maps.isEmpty())
            return refuse(word, u"the system knows no memory of %1"_s.arg(mapped.path));
    }
    return std::make_unique<MappedTarget>(std::move(mapped));
}

} // namespace veldmap
