#include "target/gdb_packets.h"

#include <algorithm>
#include <numeric>

namespace veldmap {

namespace {

constexpr char kEscape = '}';
constexpr char kEscapeBit = 0x20; // what an escaped byte is changed by
constexpr char kRepeat = '*';
constexpr int kRepeatBase = 29; // a count of n is the character 29 + n
constexpr int kFewestRepeats = 3;

bool needsEscape(char byte)
{
    return byte == '$' || byte == '#' || byte == kEscape || byte == kRepeat;
}

quint8 checksum(QByteArrayView bytes)
{
    return std::accumulate(bytes.begin(), bytes.end(), quint8(0),
                           [](quint8 sum, char byte) { return static_cast<quint8>(sum + static_cast<quint8>(byte)); });
}

int digitOf(char character)
{
    if (character >= '0' && character <= '9')
        return character - '0';
    const char folded = static_cast<char>(character | 0x20);
    return folded >= 'a' && folded <= 'f' ? folded - 'a' + 10 : -1;
}

/// \a raw without its escapes, and with what is repeated written out: "0* " is 0000.
std::optional<QByteArray> decoded(QByteArrayView raw)
{
    QByteArray text;
    text.reserve(raw.size());
    for (qsizetype at = 0; at < raw.size(); ++at) {
        const bool isEscape = raw[at] == kEscape;
        const bool isRepeat = raw[at] == kRepeat;
        if ((isEscape || isRepeat) && at + 1 == raw.size())
            return std::nullopt;
        if (isEscape) {
            text += static_cast<char>(raw[++at] ^ kEscapeBit);
        } else if (isRepeat) {
            const int count = static_cast<unsigned char>(raw[++at]) - kRepeatBase;
            if (text.isEmpty() || count < kFewestRepeats || text.size() + count > GdbPacketParser::kMostBytes)
                return std::nullopt;
            text.append(count, text.back());
        } else {
            text += raw[at];
        }
    }
    return text;
}

} // namespace

QByteArray gdbPacket(QByteArrayView payload)
{
    QByteArray packet = "$";
    for (const char byte : payload) {
        if (needsEscape(byte))
            packet += kEscape;
        packet += needsEscape(byte) ? static_cast<char>(byte ^ kEscapeBit) : byte;
    }
    const quint8 sum = checksum(QByteArrayView(packet).sliced(1));
    return packet + '#' + QByteArray::number(sum, 16).rightJustified(2, '0');
}

std::optional<QByteArray> bytesOfHex(QByteArrayView digits)
{
    if (digits.size() % 2 != 0)
        return std::nullopt;
    QByteArray bytes;
    bytes.reserve(digits.size() / 2);
    for (qsizetype at = 0; at < digits.size(); at += 2) {
        const int high = digitOf(digits[at]);
        const int low = digitOf(digits[at + 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes += static_cast<char>(high * 16 + low);
    }
    return bytes;
}

void GdbPacketParser::feed(QByteArrayView bytes)
{
    for (const char byte : bytes)
        take(byte);
}

std::optional<GdbEvent> GdbPacketParser::next()
{
    if (m_events.empty())
        return std::nullopt;
    GdbEvent event = std::move(m_events.front());
    m_events.pop_front();
    return event;
}

void GdbPacketParser::take(char byte)
{
    const bool isCutOff = m_state != Between && byte == '$'; // no digit of a checksum, and escaped in a payload
    switch (isCutOff ? Between : m_state) {
    case Between:
        return takeBetween(byte);
    case Inside:
        return takeInside(byte);
    case FirstDigit:
        m_firstDigit = byte;
        m_state = SecondDigit;
        return;
    case SecondDigit:
        return end(byte);
    }
}

void GdbPacketParser::takeBetween(char byte)
{
    if (byte == '$' || byte == '%') {
        m_raw.clear();
        m_sum = 0;
        m_isTooLong = false;
        m_isNotification = byte == '%';
        m_state = Inside;
    } else if (byte == '+' || byte == '-') {
        m_events.push_back({byte == '+' ? GdbEvent::Taken : GdbEvent::Refused, {}});
    }
}

void GdbPacketParser::takeInside(char byte)
{
    if (byte == '#') {
        m_state = FirstDigit;
    } else if (m_raw.size() >= kMostBytes) {
        m_isTooLong = true;
    } else {
        m_raw += byte;
        m_sum = static_cast<quint8>(m_sum + static_cast<quint8>(byte));
    }
}

void GdbPacketParser::end(char secondDigit)
{
    m_state = Between;
    if (m_isNotification)
        return;
    const int high = digitOf(m_firstDigit);
    const int low = digitOf(secondDigit);
    const bool isWhole = !m_isTooLong && high >= 0 && low >= 0 && high * 16 + low == m_sum;
    std::optional<QByteArray> payload = isWhole ? decoded(m_raw) : std::nullopt;
    if (payload)
        m_events.push_back({GdbEvent::Packet, *std::move(payload)});
    else
        m_events.push_back({GdbEvent::Damaged, {}});
}

} // namespace veldmap
