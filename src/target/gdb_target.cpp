#include "target/gdb_packets.h"
#include "target/kinds.h"
#include "target/stream.h"
#include "text/lines.h"

#include <algorithm>
#include <cstring>

using namespace Qt::StringLiterals;

// A server of gdb's remote serial protocol: gdb:HOST:PORT or gdb:PATH, and behind it ",phys=auto|on|off" and
// ",run=off|on". What is said of one register:
//
//     -> $m40004000,4#55         <- $03000000#83                  reads it
//     -> $M40004000,4:01000000#f0   <- $OK#9a                     writes it
//
// A block of 32-bit words is one request, as far as packets go, and a server makes 32-bit accesses of it; a block of
// narrower ones is a request for each, so that nobody joins them. Where no acknowledgements are wanted the requests of
// a block go out together.

namespace veldmap {

namespace {

constexpr qsizetype kPacketSize = 400;       // bytes, of a server that does not tell
constexpr qsizetype kFewestPacketBytes = 64; // a server that takes less is none
constexpr qsizetype kMostPacketBytes = 64 * 1024;
constexpr qsizetype kRequestBytes = 40;           // of a packet, beside the data
constexpr qsizetype kMostRequestsAtOnce = 256;    // so that neither side waits for the other to take what it sends
constexpr qsizetype kMostReplyBytes = 32 * 1024;  // of the requests that are out
constexpr qsizetype kMostNoise = 4 * 1024 * 1024; // bytes in front of an answer
constexpr int kMostAttempts = 4;                  // at a packet that does not come well
constexpr std::chrono::milliseconds kLeaveTakingTime{500};

enum class Physical { Auto, On, Off };

/// Where a server is, and how it is used.
struct GdbPlace {
    QString host; ///< empty for a socket's path
    QString port;
    QString path;
    Physical physical = Physical::Auto;
    bool runs = false; ///< the chip runs between accesses

    QString name() const { return path.isEmpty() ? u"%1:%2"_s.arg(host, port) : path; }
};

bool isHexDigit(char character)
{
    return std::isxdigit(static_cast<unsigned char>(character)) != 0;
}

/// Whether \a text tells that the chip has stopped, or that there is none any more.
bool isStop(QByteArrayView text)
{
    return text.size() >= 3 && QByteArrayView("TSWX").contains(text[0]) && isHexDigit(text[1]) && isHexDigit(text[2]);
}

/// Whether \a text is what the chip prints, in hexadecimal, which servers send at any time.
bool isPrinted(QByteArrayView text)
{
    return text.size() % 2 == 1 && text[0] == 'O' && std::all_of(text.begin() + 1, text.end(), isHexDigit);
}

bool isError(QByteArrayView text)
{
    return text.startsWith('E') && (text.startsWith("E.") || (text.size() == 3 && isHexDigit(text[1])));
}

QByteArray addressAndSize(quint32 address, qsizetype size)
{
    return QByteArray::number(address, 16) + ',' + QByteArray::number(size, 16);
}

class GdbTarget final : public PlacedTarget {
public:
    explicit GdbTarget(GdbPlace place) : m_place(std::move(place)) {}
    ~GdbTarget() override { takeLeave(); }

    QString description() const override { return "the gdb server "_L1 + m_place.name(); }

    TargetAnswer connect() override
    {
        takeLeave();
        m_parser = {};
        m_isRunning = m_hasOwnMemoryMode = m_canReconnect = m_writesBinary = m_acknowledges = false;
        m_packetSize = kPacketSize;
        m_acknowledges = true;
        const Patience patience(settings);
        TargetAnswer answer = m_place.path.isEmpty() ? m_stream.openTcp(m_place.host, m_place.port, patience)
                                                     : m_stream.openLocal(m_place.path, patience);
        if (answer)
            answer = greet();
        if (answer && m_place.runs)
            answer = resume();
        if (!answer)
            drop();
        return answer;
    }

    TargetAnswer read(quint32 address, std::span<std::byte> bytes, int width) override
    {
        return whileHalted([&] { return readHalted(address, bytes, width); });
    }

    TargetAnswer write(quint32 address, std::span<const std::byte> bytes, int width) override
    {
        return whileHalted([&] { return writeHalted(address, bytes, width); });
    }

private:
    // ---- the connection

    /// Learns what the server can do, and tells it what is wanted.
    TargetAnswer greet()
    {
        QByteArray reply;
        TargetAnswer answer = request("qSupported", reply);
        if (!answer)
            return answer;
        bool canBeSilent = false;
        for (const QByteArray &feature : reply.split(';')) {
            if (feature.startsWith("PacketSize="))
                takePacketSize(feature.sliced(feature.indexOf('=') + 1));
            canBeSilent = canBeSilent || feature == "QStartNoAckMode+";
        }
        if (canBeSilent && !(answer = request("QStartNoAckMode", reply)))
            return answer;
        m_acknowledges = !(canBeSilent && reply == "OK");
        return m_place.physical == Physical::Off ? answer : choosePhysicalMemory();
    }

    void takePacketSize(const QByteArray &digits)
    {
        bool isNumber = false;
        const qint64 size = digits.toLongLong(&isNumber, 16);
        if (isNumber)
            m_packetSize = std::clamp<qint64>(size, kFewestPacketBytes, kMostPacketBytes);
    }

    /// QEMU takes writes to devices by their physical addresses alone; to other addresses it answers OK and does
    /// nothing. No other server knows the request.
    TargetAnswer choosePhysicalMemory()
    {
        QByteArray reply;
        TargetAnswer answer = request("qqemu.PhyMemMode", reply);
        if (answer && reply == "0") {
            answer = request("Qqemu.PhyMemMode:1", reply);
            m_hasOwnMemoryMode = answer && reply == "OK";
            reply = m_hasOwnMemoryMode ? "1" : "";
        }
        if (answer && reply != "1" && m_place.physical == Physical::On)
            return noAnswer(u"it knows no physical addresses, which phys=on asks for"_s);
        return answer;
    }

    /// Leaves the server as others expect it. What it answers makes no difference any more.
    void takeLeave()
    {
        const TargetSettings before = settings;
        settings.timeout = std::min(settings.timeout, kLeaveTakingTime);
        settings.interrupted = nullptr;
        QByteArray reply;
        bool isThere = m_stream.isOpen() && (m_hasOwnMemoryMode || m_place.runs) && halt();
        if (isThere && m_hasOwnMemoryMode)
            isThere = bool(request("Qqemu.PhyMemMode:0", reply));
        if (isThere && m_place.runs)
            (void)request("D", reply); // it runs on
        m_stream.close();
        settings = before;
    }

    /// Closes the connection, on which an answer may still come that would be taken for that to another request.
    void drop()
    {
        m_canReconnect = settings.interrupted && *settings.interrupted;
        m_stream.close();
    }

    template <typename Access>
    TargetAnswer whileHalted(const Access &access)
    {
        TargetAnswer answer;
        if (Patience(settings).isInterrupted())
            return noAnswer(u"interrupted"_s);
        if (!m_stream.isOpen() && !m_canReconnect)
            return noAnswer(u"%1 is not connected"_s.arg(description()));
        if (!m_stream.isOpen())
            answer = connect();
        if (answer)
            answer = halt();
        if (answer)
            answer = access();
        if (answer.outcome != TargetAnswer::NoAnswer && m_place.runs) {
            if (const TargetAnswer running = resume(); !running)
                answer = running;
        }
        if (answer.outcome == TargetAnswer::NoAnswer) {
            drop();
            answer.reason = description() + ": "_L1 + answer.reason;
        }
        return answer;
    }

    /// Stops the chip if it runs: servers take no request before.
    TargetAnswer halt()
    {
        if (!m_isRunning)
            return {};
        const Patience patience(settings);
        TargetAnswer answer = m_stream.send("\x03", patience);
        QByteArray text;
        while (answer && m_isRunning)
            answer = nextPacket({}, patience, text); // which sees that it stops
        return answer;
    }

    TargetAnswer resume()
    {
        const Patience patience(settings);
        m_isRunning = true;
        return m_stream.send(gdbPacket("c"), patience);
    }

    // ---- requests and replies

    TargetAnswer request(const QByteArray &payload, QByteArray &reply)
    {
        QList<QByteArray> replies;
        TargetAnswer answer = requestAll({payload}, replies);
        reply = replies.value(0);
        return answer;
    }

    /// Sends \a payloads and takes the replies to all of them. Without acknowledgements they go out together.
    TargetAnswer requestAll(const QList<QByteArray> &payloads, QList<QByteArray> &replies)
    {
        TargetAnswer answer;
        if (!m_acknowledges) {
            QByteArray packets;
            for (const QByteArray &payload : payloads)
                packets += gdbPacket(payload);
            answer = m_stream.send(packets, Patience(settings));
        }
        for (qsizetype at = 0; answer && at < payloads.size(); ++at) {
            const Patience patience(settings);
            const QByteArray packet = gdbPacket(payloads[at]);
            if (m_acknowledges)
                answer = m_stream.send(packet, patience);
            QByteArray reply;
            if (answer)
                answer = nextReply(packet, patience, reply);
            replies += reply;
        }
        return answer;
    }

    /// The next packet that is the reply to a request.
    TargetAnswer nextReply(const QByteArray &packet, const Patience &patience, QByteArray &reply)
    {
        TargetAnswer answer;
        do {
            answer = nextPacket(packet, patience, reply);
        } while (answer && (isStop(reply) || isPrinted(reply)));
        return answer;
    }

    /// The next packet. As long as packets are acknowledged, \a packet is sent again when it did not come well.
    TargetAnswer nextPacket(const QByteArray &packet, const Patience &patience, QByteArray &payload)
    {
        int attempts = 1;
        qsizetype noise = 0;
        for (;;) {
            const std::optional<GdbEvent> event = m_parser.next();
            if (!event) {
                QByteArray bytes;
                if (TargetAnswer answer = m_stream.receive(bytes, patience); !answer)
                    return answer;
                if ((noise += bytes.size()) > kMostNoise)
                    return noAnswer(u"it sends and sends, but no answer"_s);
                m_parser.feed(bytes);
                continue;
            }
            if (event->kind == GdbEvent::Taken)
                continue;
            if (event->kind == GdbEvent::Packet) {
                payload = event->payload;
                m_isRunning = m_isRunning && !isStop(payload);
                if (isStop(payload) && (payload[0] == 'W' || payload[0] == 'X'))
                    return noAnswer(u"what ran there has ended"_s);
                return m_acknowledges ? m_stream.send("+", patience) : TargetAnswer();
            }
            if (!m_acknowledges || ++attempts > kMostAttempts)
                return noAnswer(event->kind == GdbEvent::Damaged ? u"it sent a damaged packet"_s
                                                                 : u"it takes no packet"_s);
            const QByteArray again = event->kind == GdbEvent::Damaged ? QByteArray("-") : packet;
            if (TargetAnswer answer = m_stream.send(again, patience); !answer)
                return answer;
        }
    }

    // ---- memory

    TargetAnswer readHalted(quint32 address, std::span<std::byte> bytes, int width)
    {
        const qsizetype most = width == 4 ? (m_packetSize - 4) / 8 * 4 : width;
        std::size_t asked = 0;
        while (asked < bytes.size()) {
            QList<QByteArray> requests;
            QList<qsizetype> sizes;
            const std::size_t begin = asked;
            while (asked < bytes.size() && requests.size() < kMostRequestsAtOnce &&
                   2 * qsizetype(asked - begin) < kMostReplyBytes) {
                const qsizetype size = std::min<qsizetype>(most, std::ssize(bytes) - qsizetype(asked));
                requests += 'm' + addressAndSize(address + quint32(asked), size);
                sizes += size;
                asked += std::size_t(size);
            }
            QList<QByteArray> replies;
            if (TargetAnswer answer = requestAll(requests, replies); !answer)
                return answer;
            std::byte *to = bytes.data() + begin;
            for (qsizetype at = 0; at < replies.size(); ++at) {
                if (TargetAnswer answer = takeBytes(replies[at], {to, std::size_t(sizes[at])}); !answer)
                    return answer;
                to += sizes[at];
            }
        }
        return {};
    }

    TargetAnswer takeBytes(const QByteArray &reply, std::span<std::byte> bytes) const
    {
        if (reply.isEmpty() || isError(reply))
            return refusal(reply, u"read"_s);
        const std::optional<QByteArray> read = bytesOfHex(reply);
        if (!read || read->size() > std::ssize(bytes))
            return nonsense(reply);
        if (read->size() < std::ssize(bytes))
            return notHere(u"%1 gives %2 bytes of %3"_s.arg(description(), QString::number(read->size()),
                                                            QString::number(bytes.size())));
        std::memcpy(bytes.data(), read->constData(), bytes.size());
        return {};
    }

    TargetAnswer writeHalted(quint32 address, std::span<const std::byte> bytes, int width)
    {
        const qsizetype most = width == 4 ? (m_packetSize - kRequestBytes) / 8 * 4 : width;
        while (!bytes.empty()) {
            const auto part = bytes.first(std::size_t(std::min<qsizetype>(most, std::ssize(bytes))));
            if (TargetAnswer answer = writePart(address, part); !answer)
                return answer;
            address += quint32(part.size());
            bytes = bytes.subspan(part.size());
        }
        return {};
    }

    /// Writes with the request that the server knows: in hexadecimal, or the bytes themselves.
    TargetAnswer writePart(quint32 address, std::span<const std::byte> bytes)
    {
        const QByteArray raw(reinterpret_cast<const char *>(bytes.data()), std::ssize(bytes));
        const QByteArray place = addressAndSize(address, raw.size()) + ':';
        QByteArray reply;
        TargetAnswer answer;
        if (!m_writesBinary)
            answer = request('M' + place + raw.toHex(), reply);
        if (answer && reply.isEmpty()) {
            answer = request('X' + place + raw, reply);
            m_writesBinary = answer && reply == "OK";
        }
        if (!answer || reply == "OK")
            return answer;
        return reply.isEmpty() || isError(reply) ? refusal(reply, u"written"_s) : nonsense(reply);
    }

    TargetAnswer refusal(const QByteArray &reply, const QString &done) const
    {
        if (reply.isEmpty())
            return notHere(u"%1 does not let memory be %2"_s.arg(description(), done));
        return notHere(u"%1 answers %2"_s.arg(description(), QString::fromLatin1(reply.first(qMin(reply.size(), 80)))));
    }

    TargetAnswer nonsense(const QByteArray &reply) const
    {
        return noAnswer(u"it answers '%1', which is no answer"_s.arg(
            QString::fromLatin1(reply.first(qMin(reply.size(), 20)).toPercentEncoding(" ,:;+-=", "%"))));
    }

    const GdbPlace m_place;
    Stream m_stream;
    GdbPacketParser m_parser;
    qsizetype m_packetSize = kPacketSize;
    bool m_acknowledges = true;
    bool m_writesBinary = false;
    bool m_hasOwnMemoryMode = false; ///< it was told to take physical addresses
    bool m_isRunning = false;
    bool m_canReconnect = false; ///< the connection was closed for an interruption alone
};

/// Takes one of the options behind the place; false when there is none such.
bool takeOption(QStringView option, GdbPlace &place)
{
    if (option == "phys=auto"_L1 || option == "phys=on"_L1 || option == "phys=off"_L1) {
        place.physical = option.endsWith("auto"_L1) ? Physical::Auto
                         : option.endsWith("on"_L1) ? Physical::On
                                                    : Physical::Off;
        return true;
    }
    place.runs = option == "run=on"_L1;
    return place.runs || option == "run=off"_L1;
}

/// The place that \a text names: a path has a slash, and a port alone is one of this machine.
bool takePlace(const QString &text, GdbPlace &place)
{
    if (text.contains(u'/')) {
        place.path = text;
        return true;
    }
    const qsizetype colon = text.lastIndexOf(u':');
    place.host = colon > 0 ? text.first(colon) : u"localhost"_s;
    place.port = text.sliced(colon + 1);
    if (place.host.startsWith(u'[') && place.host.endsWith(u']'))
        place.host = place.host.sliced(1, place.host.size() - 2);
    bool isNumber = false;
    const int port = place.port.toInt(&isNumber);
    return isNumber && port > 0 && port < 65536;
}

} // namespace

std::unique_ptr<PlacedTarget> makeGdbTarget(const TargetWord &word)
{
    const QStringList parts = word.details.split(u',');
    GdbPlace place;
    if (!takePlace(parts.first(), place))
        return refuse(word, u"a server is gdb:HOST:PORT, or gdb:PATH of a socket, which has a slash"_s);
    for (const QString &option : parts.sliced(1)) {
        if (!takeOption(option, place))
            return refuse(word, u"'%1' is none of phys=auto, phys=on, phys=off, run=on, run=off"_s.arg(option));
    }
    return std::make_unique<GdbTarget>(std::move(place));
}

} // namespace veldmap
