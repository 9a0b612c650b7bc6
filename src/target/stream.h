#pragma once

#include "target/target.h"

#include <QByteArray>

namespace veldmap {

/// How long somebody waits: from its making on for the settings' timeout, or until it is interrupted.
class Patience {
public:
    explicit Patience(const TargetSettings &settings)
        : m_settings(settings), m_end(std::chrono::steady_clock::now() + settings.timeout)
    {
    }

    bool isInterrupted() const { return m_settings.interrupted && *m_settings.interrupted; }
    /// Waits until one of the poll \a events of \a descriptor is there.
    TargetAnswer wait(int descriptor, short events) const;
    /// Waits for \a isDone, which becomes true elsewhere.
    template <typename IsDone>
    TargetAnswer waitFor(const IsDone &isDone) const
    {
        while (!isDone(nextSlice())) {
            if (TargetAnswer answer = check(); !answer)
                return answer;
        }
        return {};
    }

    /// Done as long as there is time left and nobody has interrupted.
    TargetAnswer check() const;

private:
    /// How long to wait before it is asked again whether somebody has interrupted; 0 at the end.
    std::chrono::milliseconds nextSlice() const;

    const TargetSettings &m_settings;
    const std::chrono::steady_clock::time_point m_end;
};

/// The reason of an answer that did not come because the other side has closed the stream.
inline constexpr QLatin1StringView kClosed("the connection was closed");

/// Bytes to and from a server or a program. A closed stream is one that was never opened.
class Stream {
public:
    Stream() = default;
    Stream(const Stream &) = delete;
    Stream &operator=(const Stream &) = delete;
    ~Stream() { close(); }

    TargetAnswer openTcp(const QString &host, const QString &port, const Patience &patience);
    TargetAnswer openLocal(const QString &path, const Patience &patience);
    /// Takes over \a descriptor, a socket.
    void take(int descriptor);
    bool isOpen() const { return m_descriptor >= 0; }
    void close();

    TargetAnswer send(QByteArrayView bytes, const Patience &patience);
    /// Waits for bytes; those that are there are \a bytes then, at least one.
    TargetAnswer receive(QByteArray &bytes, const Patience &patience);

private:
    int m_descriptor = -1;
};

} // namespace veldmap
