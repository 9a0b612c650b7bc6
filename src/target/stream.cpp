#include "target/stream.h"

#include "files/paths.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <future>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr std::chrono::milliseconds kSlice{50}; // an interruption is seen after at most this time
constexpr qsizetype kMostAtOnce = 64 * 1024;    // bytes

/// The answer for a system's \a error, 0 for the end of what is received.
TargetAnswer fault(int error)
{
    const bool isClosed = error == 0 || error == ECONNRESET || error == EPIPE;
    return {TargetAnswer::NoAnswer, isClosed ? QString(kClosed) : systemText(error)};
}

struct FreeAddresses {
    void operator()(addrinfo *addresses) const { ::freeaddrinfo(addresses); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

struct Resolved {
    int error = 0;
    Addresses addresses;
};

Resolved resolve(const std::string &host, const std::string &port)
{
    addrinfo wanted = {};
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    const int error = ::getaddrinfo(host.c_str(), port.c_str(), &wanted, &found);
    return {error, Addresses(error == 0 ? found : nullptr)};
}

/// The addresses of \a host. A name server may take longer than anybody waits, so a thread asks it, which is left to
/// itself then.
TargetAnswer resolve(const QString &host, const QString &port, const Patience &patience, Addresses &addresses)
{
    std::promise<Resolved> promise;
    std::future<Resolved> future = promise.get_future();
    std::thread([promise = std::move(promise), host = host.toStdString(), port = port.toStdString()]() mutable {
        promise.set_value(resolve(host, port));
    }).detach();
    const TargetAnswer answer =
        patience.waitFor([&](auto slice) { return future.wait_for(slice) == std::future_status::ready; });
    if (!answer)
        return answer;
    Resolved resolved = future.get();
    if (resolved.error != 0)
        return {TargetAnswer::NoAnswer, QString::fromLocal8Bit(::gai_strerror(resolved.error))};
    addresses = std::move(resolved.addresses);
    return {};
}

int openSocket(int family)
{
    return ::socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
}

TargetAnswer connectTo(int descriptor, const sockaddr *address, socklen_t size, const Patience &patience)
{
    if (::connect(descriptor, address, size) == 0)
        return {};
    if (errno != EINPROGRESS)
        return fault(errno);
    if (TargetAnswer answer = patience.wait(descriptor, POLLOUT); !answer)
        return answer;
    int error = 0;
    socklen_t length = sizeof(error);
    ::getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &length);
    return error == 0 ? TargetAnswer() : fault(error);
}

} // namespace

TargetAnswer Patience::check() const
{
    if (isInterrupted())
        return {TargetAnswer::NoAnswer, u"interrupted"_s};
    if (std::chrono::steady_clock::now() < m_end)
        return {};
    const double seconds = std::chrono::duration<double>(m_settings.timeout).count();
    return {TargetAnswer::NoAnswer, u"no answer within %1 s"_s.arg(seconds)};
}

std::chrono::milliseconds Patience::nextSlice() const
{
    if (isInterrupted())
        return {};
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_end - std::chrono::steady_clock::now());
    return std::clamp(left, std::chrono::milliseconds(0), kSlice);
}

TargetAnswer Patience::wait(int descriptor, short events) const
{
    return waitFor([&](std::chrono::milliseconds slice) {
        pollfd waiting = {descriptor, events, 0};
        return ::poll(&waiting, 1, static_cast<int>(slice.count())) > 0;
    });
}

TargetAnswer Stream::openTcp(const QString &host, const QString &port, const Patience &patience)
{
    close();
    Addresses addresses;
    TargetAnswer answer = resolve(host, port, patience, addresses);
    for (const addrinfo *address = addresses.get(); address; address = address->ai_next) {
        take(openSocket(address->ai_family));
        answer = isOpen() ? connectTo(m_descriptor, address->ai_addr, address->ai_addrlen, patience) : fault(errno);
        if (answer) {
            const int yes = 1; // each request is short, and waited for
            ::setsockopt(m_descriptor, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof(yes));
            return {};
        }
        close();
    }
    return answer;
}

TargetAnswer Stream::openLocal(const QString &path, const Patience &patience)
{
    close();
    const QByteArray name = QFile::encodeName(path);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (name.size() >= qsizetype(sizeof(address.sun_path)))
        return fault(ENAMETOOLONG);
    std::memcpy(address.sun_path, name.constData(), std::size_t(name.size()));
    take(openSocket(AF_UNIX));
    const auto *generic = reinterpret_cast<const sockaddr *>(&address);
    TargetAnswer answer = isOpen() ? connectTo(m_descriptor, generic, sizeof(address), patience) : fault(errno);
    if (!answer)
        close();
    return answer;
}

void Stream::take(int descriptor)
{
    close();
    m_descriptor = descriptor;
}

void Stream::close()
{
    if (isOpen())
        ::close(m_descriptor);
    m_descriptor = -1;
}

TargetAnswer Stream::send(QByteArrayView bytes, const Patience &patience)
{
    while (!bytes.isEmpty()) {
        const ssize_t sent = ::send(m_descriptor, bytes.data(), std::size_t(bytes.size()), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent >= 0) {
            bytes = bytes.sliced(sent);
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            if (TargetAnswer answer = patience.wait(m_descriptor, POLLOUT); !answer)
                return answer;
        } else if (errno != EINTR) {
            return fault(errno);
        }
    }
    return {};
}

TargetAnswer Stream::receive(QByteArray &bytes, const Patience &patience)
{
    bytes.resize(kMostAtOnce);
    for (;;) {
        // One that always has bytes must not keep somebody for longer than the patience lasts.
        TargetAnswer answer = patience.check();
        if (answer)
            answer = patience.wait(m_descriptor, POLLIN);
        if (!answer)
            return answer;
        const ssize_t received = ::recv(m_descriptor, bytes.data(), std::size_t(bytes.size()), MSG_DONTWAIT);
        if (received > 0) {
            bytes.truncate(received);
            return {};
        }
        if (received == 0)
            return fault(0);
        if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR)
            return fault(errno);
    }
}

} // namespace veldmap
