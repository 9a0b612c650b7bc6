#pragma once

#include <veldmap/veldmap_export.h>

#include <QByteArray>

#include <deque>
#include <optional>

/// What the remote serial protocol of gdb is made of: packets "$...#CC" with a checksum of two hexadecimal digits,
/// "+" and "-" for packets that came well or not, and notifications "%...#CC", which nobody has asked for.
namespace veldmap {

/// The packet of \a payload, in which bytes that mean something else are escaped.
VELDMAP_EXPORT QByteArray gdbPacket(QByteArrayView payload);

/// The bytes that \a digits are in hexadecimal; nothing when they are none.
VELDMAP_EXPORT std::optional<QByteArray> bytesOfHex(QByteArrayView digits);

/// Something that a server has sent.
struct GdbEvent {
    enum Kind {
        Packet,  ///< a packet whose checksum is right
        Damaged, ///< a packet with another checksum, with wrong escapes, or larger than any server's
        Taken,   ///< "+"
        Refused, ///< "-"
    };

    Kind kind;
    QByteArray payload; ///< of a packet, without escapes and repetitions
};

/// Cuts the bytes of a server into events. It takes any bytes in any pieces; what stands between packets, and
/// notifications, are passed over.
class VELDMAP_EXPORT GdbPacketParser {
public:
    /// A packet of more bytes is a damaged one, before and after repetitions are written out.
    static constexpr qsizetype kMostBytes = 1024 * 1024;

    void feed(QByteArrayView bytes);
    /// The next event, nothing before more bytes are fed.
    std::optional<GdbEvent> next();

private:
    enum State { Between, Inside, FirstDigit, SecondDigit };

    void take(char byte);
    void takeBetween(char byte);
    void takeInside(char byte);
    void end(char secondDigit);

    std::deque<GdbEvent> m_events;
    QByteArray m_raw; // of the packet so far
    State m_state = Between;
    bool m_isNotification = false;
    bool m_isTooLong = false;
    quint8 m_sum = 0; // of the raw bytes
    char m_firstDigit = 0;
};

} // namespace veldmap
