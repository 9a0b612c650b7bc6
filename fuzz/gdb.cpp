// Any bytes as what a gdb server sends. In one piece and in single bytes they are the same events, and what a packet
// holds can be sent and comes back as it was.

#include "target/gdb_packets.h"

#include <QByteArrayList>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

QByteArrayList eventsOf(QByteArrayView bytes, qsizetype piece)
{
    veldmap::GdbPacketParser parser;
    QByteArrayList events;
    for (qsizetype at = 0; at < bytes.size(); at += piece) {
        parser.feed(bytes.sliced(at, qMin(piece, bytes.size() - at)));
        while (const std::optional<veldmap::GdbEvent> event = parser.next())
            events += QByteArray::number(event->kind) + event->payload;
    }
    return events;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const QByteArrayList events = eventsOf(bytes, qMax<qsizetype>(bytes.size(), 1));
    if (events != eventsOf(bytes, 1))
        std::abort();
    for (const QByteArray &event : events) {
        const QByteArray payload = event.sliced(1);
        if (event[0] == '0' && eventsOf(veldmap::gdbPacket(payload), 7) != QByteArrayList{"0" + payload})
            std::abort();
        if (const auto read = veldmap::bytesOfHex(payload); read && read->toHex() != payload.toLower())
            std::abort();
    }
    return 0;
}
