#include "target/gdb_server.h"

#include <QFile>

#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// Waits for bytes; false after \a milliseconds.
bool hasBytes(int descriptor, int milliseconds)
{
    pollfd waiting = {descriptor, POLLIN, 0};
    return ::poll(&waiting, 1, milliseconds) > 0;
}

bool send(int connection, const QByteArray &bytes)
{
    return ::send(connection, bytes.constData(), std::size_t(bytes.size()), MSG_NOSIGNAL) == bytes.size();
}

} // namespace

GdbServer::GdbServer(const QByteArray &features, Script script)
    : m_features(features), m_script(std::move(script)), m_listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, QFile::encodeName(path()).constData(), sizeof(address.sun_path) - 1);
    if (::bind(m_listener, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0 ||
        ::listen(m_listener, 4) != 0)
        std::abort();
    m_thread = std::thread([this] { serve(); });
}

GdbServer::~GdbServer()
{
    m_isEnding = true;
    m_thread.join();
    ::close(m_listener);
}

QStringList GdbServer::taken()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_requests, {});
}

QByteArray GdbServer::packet(const QByteArray &payload)
{
    quint8 sum = 0;
    for (const char byte : payload)
        sum = quint8(sum + quint8(byte));
    return '$' + payload + '#' + QByteArray::number(sum + 256, 16).last(2);
}

GdbServer::Reply GdbServer::memory(const QByteArray &request)
{
    if (!request.startsWith('m'))
        return {packet(request.startsWith('M') || request == "D" ? "OK" : "")};
    const QList<QByteArray> numbers = request.sliced(1).split(',');
    const quint32 address = numbers[0].toUInt(nullptr, 16);
    QByteArray bytes;
    for (quint32 at = 0; at < numbers[1].toUInt(nullptr, 16); ++at)
        bytes += char(address + at);
    return {packet(bytes.toHex())};
}

void GdbServer::serve()
{
    while (!m_isEnding) {
        if (!hasBytes(m_listener, 20))
            continue;
        const int connection = ::accept(m_listener, nullptr, nullptr);
        serve(connection);
        ::close(connection);
    }
}

void GdbServer::serve(int connection)
{
    bool acknowledges = true;
    QByteArray received;
    while (!m_isEnding) {
        if (!hasBytes(connection, 20))
            continue;
        QByteArray bytes(65536, '\0');
        const ssize_t size = ::recv(connection, bytes.data(), std::size_t(bytes.size()), 0);
        if (size <= 0)
            return;
        received += bytes.first(size);
        QList<QByteArray> requests;
        for (qsizetype end = received.indexOf('#'); end >= 0 && end + 3 <= received.size();
             end = received.indexOf('#')) {
            requests += received.first(end).sliced(received.indexOf('$') + 1);
            received.remove(0, end + 3);
        }
        if (received.contains('\x03')) {
            requests += "\x03";
            received.clear();
        }
        {
            const std::lock_guard lock(m_mutex);
            if (!requests.isEmpty())
                m_requests += QString::fromLatin1(requests.join(' '));
        }
        for (const QByteArray &request : requests) {
            if (!reply(connection, request, acknowledges))
                return;
        }
    }
}

/// Replies to \a request; false when the connection ends with that.
bool GdbServer::reply(int connection, const QByteArray &request, bool &acknowledges)
{
    if (acknowledges && request != "\x03" && !send(connection, "+"))
        return false;
    Reply reply;
    if (request == "qSupported") {
        reply.bytes = packet(m_features);
    } else if (request == "QStartNoAckMode") {
        reply.bytes = packet("OK");
        acknowledges = false;
    } else {
        reply = m_script(request);
    }
    do {
        if (!reply.bytes.isEmpty() && !send(connection, reply.bytes))
            return false;
    } while (reply.after == Reply::Floods && !m_isEnding);
    return reply.after != Reply::Closes;
}
