#include "target/uio_maps.h"

#include "text/literals.h"

#include <QFile>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

std::optional<qint64> numberIn(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return numberOf(QString::fromLatin1(file.readAll().trimmed()));
}

} // namespace

QList<UioMap> uioMapsOf(const QString &directory, std::optional<quint32> address)
{
    constexpr int kMostMaps = 5; // of a device, as the system has it
    constexpr qint64 kAddressSpace = Q_INT64_C(1) << 32;
    const qint64 pageSize = ::sysconf(_SC_PAGESIZE);
    QList<UioMap> maps;
    for (int number = 0; number < kMostMaps; ++number) {
        const QString map = u"%1/maps/map%2/"_s.arg(directory, QString::number(number));
        const std::optional<qint64> begin = numberIn(map + u"addr"_s);
        const std::optional<qint64> size = numberIn(map + u"size"_s);
        if (!begin || !size)
            break;
        // Mapping begins with a page, and the device's memory some bytes behind.
        const qint64 page = *begin / pageSize * pageSize;
        const qint64 ahead = qMax(numberIn(map + u"offset"_s).value_or(0), *begin - page);
        const bool isMoved = number == 0 && address;
        const qint64 first = isMoved ? *address : page + ahead;
        const qint64 length = *size - (*begin == page ? ahead : 0);
        if (*begin >= 0 && length > 0 && first + length <= kAddressSpace)
            maps += UioMap{first, length, number * pageSize, ahead, true};
    }
    return maps;
}

} // namespace veldmap
