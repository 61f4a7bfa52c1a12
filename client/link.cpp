// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/link.h"

#include "client/endpoint.h"

#include <QLocalSocket>
#include <QTcpSocket>
#include <QTimer>

namespace client {

namespace {

bool isUnreachable(QAbstractSocket::SocketError error)
{
    return error != QAbstractSocket::RemoteHostClosedError;
}

bool isUnreachable(QLocalSocket::LocalSocketError error)
{
    return error != QLocalSocket::PeerClosedError;
}

QString explain(QAbstractSocket::SocketError error, const QString &text)
{
    switch (error) {
    case QAbstractSocket::ConnectionRefusedError:
        return QStringLiteral("connection refused: no service listens there");
    case QAbstractSocket::HostNotFoundError:
        return QStringLiteral("host not found");
    default:
        return text;
    }
}

QString explain(QLocalSocket::LocalSocketError error, const QString &text)
{
    switch (error) {
    case QLocalSocket::ServerNotFoundError:
    case QLocalSocket::ConnectionRefusedError:
        return QStringLiteral("connection refused: no service listens there");
    case QLocalSocket::SocketAccessError:
        return QStringLiteral("access denied: the local socket belongs to the service's account; run this as "
                              "that user (root), or connect by TCP with --port");
    default:
        return text;
    }
}

void connectSocket(QTcpSocket &socket, const Endpoint &endpoint)
{
    socket.connectToHost(endpoint.host, endpoint.port);
}

void connectSocket(QLocalSocket &socket, const Endpoint &endpoint)
{
    socket.connectToServer(endpoint.localName);
}

/// QTcpSocket and QLocalSocket have the same functions and signals, but no common base class that declares
/// them.
template <typename Socket, typename Error>
class SocketLink : public Link
{
public:
    explicit SocketLink(QObject *parent)
        : Link(parent)
    {
        connect(&m_socket, &Socket::readyRead, this, &Link::readable);
        connect(&m_socket, &Socket::connected, this, [this] { m_wasConnected = true; });
        connect(&m_socket, &Socket::errorOccurred, this, [this](Error error) {
            const bool wasUnreachable = !m_wasConnected && isUnreachable(error);
            const QString text = explain(error, m_socket.errorString());
            // Later, because a local socket without a listener fails within connectToServer().
            QTimer::singleShot(0, this, [this, wasUnreachable, text] { Q_EMIT ended(wasUnreachable, text); });
        });
    }

    void connectTo(const Endpoint &endpoint) override { connectSocket(m_socket, endpoint); }
    QByteArray readAll() override { return m_socket.readAll(); }
    void write(const QByteArray &bytes) override { m_socket.write(bytes); }
    void flush(int milliseconds) override { m_socket.waitForBytesWritten(milliseconds); }
    [[nodiscard]] bool isConnected() const override { return m_socket.state() == Socket::ConnectedState; }

private:
    bool m_wasConnected = false;
    Socket m_socket;
};

} // namespace

Link *makeLink(const Endpoint &endpoint, QObject *parent)
{
    if (endpoint.isLocal())
        return new SocketLink<QLocalSocket, QLocalSocket::LocalSocketError>(parent);
    return new SocketLink<QTcpSocket, QAbstractSocket::SocketError>(parent);
}

} // namespace client
