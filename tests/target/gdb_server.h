#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

/// A gdb server of the tests, on a socket in a directory of its own. One connection after the other, in a thread.
class GdbServer {
public:
    /// What is sent as the reply to a request: the bytes of a packet, or anything else.
    struct Reply {
        QByteArray bytes;
        enum After { GoesOn, Closes, Floods } after = GoesOn;
    };
    using Script = std::function<Reply(const QByteArray &request)>;

    /// \a script replies to requests for memory and what else is not of the greeting.
    GdbServer(const QByteArray &features, Script script);
    ~GdbServer();

    QString path() const { return m_directory.filePath(QStringLiteral("gdb")); }
    /// The requests so far, which are forgotten then. Those that came together are one text.
    QStringList taken();

    /// A packet of \a payload, which needs no escapes.
    static QByteArray packet(const QByteArray &payload);
    /// Memory whose bytes are the low bytes of their addresses; all is written.
    static Reply memory(const QByteArray &request);

private:
    void serve();
    void serve(int connection);
    bool reply(int connection, const QByteArray &request, bool &acknowledges);

    QTemporaryDir m_directory;
    const QByteArray m_features;
    const Script m_script;
    std::mutex m_mutex;
    QStringList m_requests;
    std::atomic_bool m_isEnding = false;
    int m_listener;
    std::thread m_thread;
};
