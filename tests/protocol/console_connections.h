// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "protocol/local_daemon.h"
#include "protocol/tcp_server.h"
#include "wire/scrambling.h"

#include "protocol/fake_target.h"
#include "rows.h"

#include <QLocalSocket>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

inline int fixedOffset()
{
    return 42;
}

class RebindingServer : public TcpServer
{
public:
    using TcpServer::setRebindPending;
    using TcpServer::TcpServer;
};

/// Both listeners over one fake daemon, as the service composes them.
struct Servers
{
    explicit Servers(const ConnectionLimits &limits = {}, const ListenRules &rules = {})
        : tcp(target, fixedOffset, rules, nullptr, limits)
        , local(tcp.consoles())
    {
        QVERIFY(tcp.listenOn(0));
        QVERIFY(local.listen(directory.filePath("socket")));
    }

    FakeTarget target;
    QTemporaryDir directory;
    RebindingServer tcp;
    localDaemon local;
};

enum Transport { Tcp4, Tcp6, Local };

Q_DECLARE_METATYPE(Transport)

/// Rows: one for each kind of listener.
inline void transports()
{
    QTest::addColumn<Transport>("transport");
    row("TCP", Tcp4);
    row("local", Local);
}

/// A console on any transport that has received its first line.
class Client
{
public:
    explicit Client(const Servers &servers, Transport transport = Tcp4)
    {
        if (transport == Local) {
            m_socket = &m_local;
            m_local.connectToServer(servers.local.fullServerName());
        } else {
            const auto address = transport == Tcp4 ? QHostAddress::LocalHost : QHostAddress::LocalHostIPv6;
            m_tcp.connectToHost(address, servers.tcp.serverPort());
        }
        firstLine = receive();
    }

    QString firstLine;

    void write(const QByteArray &bytes) { m_socket->write(bytes); }
    void send(const char *text) { write(line(text)); }

    /// Returns the next line's text; "<nothing>" if none arrives.
    QString receive()
    {
        (void)QTest::qWaitFor([this] { return m_socket->canReadLine() || isClosed(); }, kPatienceMs);
        const QByteArray wire = m_socket->readLine();
        return wire.endsWith("\r\n") ? unscramble(wire.chopped(2)) : QStringLiteral("<nothing>");
    }

    QString ask(const char *text)
    {
        send(text);
        return receive();
    }

    [[nodiscard]] bool hasUnread() const { return m_socket->bytesAvailable() > 0; }

    [[nodiscard]] bool isClosed() const
    {
        return m_tcp.state() == QTcpSocket::UnconnectedState &&
               m_local.state() == QLocalSocket::UnconnectedState;
    }

    static QByteArray line(const char *text) { return scramble(QLatin1String(text), 7) + "\r\n"; }

    /// Stops or resumes reading. While stopped, data stay in the system's buffers, which do not grow.
    void setReading(bool on)
    {
        const qint64 size = on ? 0 : 1;
        m_tcp.setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 1 << 16);
        m_tcp.setReadBufferSize(size);
        m_local.setReadBufferSize(size);
        if (on)
            m_socket->peek(1); // a pipe does not resume by itself
    }

private:
    /// Long lines are slow under a sanitizer.
    static constexpr int kPatienceMs = 60000;

    QTcpSocket m_tcp;
    QLocalSocket m_local;
    QIODevice *m_socket = &m_tcp;
};

/// Returns the service's sides of the connections.
inline QList<QIODevice *> connections(const Servers &servers)
{
    return servers.tcp.findChildren<QIODevice *>(QString(), Qt::FindDirectChildrenOnly) +
           servers.local.findChildren<QIODevice *>(QString(), Qt::FindDirectChildrenOnly);
}
