// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/tcp_server.h"

#include "platform/listen_queue.h"
#include "protocol/command_target.h"
#include "protocol/logging.h"

#include <QHostAddress>
#include <QTcpSocket>
#include <QTimer>

#include <chrono>
#include <memory>
#include <utility>

namespace {

constexpr std::chrono::seconds kAcceptRetryDelay{1};

/// Size of the system's send buffer of a connection. The default grows to megabytes for a peer that does not
/// read.
constexpr int kSendBufferBytes = 256 * 1024;

Peer peerOf(const QTcpSocket &socket)
{
    const QHostAddress address = socket.peerAddress();
    bool isIpv4 = false;
    const quint32 ipv4 = address.toIPv4Address(&isIpv4); // also of an IPv4 peer of an IPv6 socket
    return {QString::number(ipv4), isIpv4 ? QHostAddress(ipv4) : address};
}

} // namespace

TcpServer::TcpServer(CommandTarget &target, OffsetSource offsets, const ListenRules &rules, QObject *parent,
                     const ConnectionLimits &limits)
    : QTcpServer(parent)
    , m_target(target)
    , m_rules(rules)
    , m_consoles(target, std::move(offsets), limits)
{
    // Queued, so that a turn of the event loop accepts no more than maxPendingConnections() and serves the
    // others in between.
    connect(this, &QTcpServer::newConnection, this, &TcpServer::servePending, Qt::QueuedConnection);
    connect(this, &QTcpServer::acceptError, this, &TcpServer::resumeAcceptingLater);
}

bool TcpServer::listenOn(quint16 port)
{
    close();
    const bool listening = listen(m_rules.address, port);
    if (!listening) {
        qCWarning(lcProtocol).noquote() << "Cannot listen at port" << port << ":" << errorString();
        return false;
    }
    lengthenListenQueue(socketDescriptor());
    qCInfo(lcProtocol, "Listening port: %d", serverPort());
    return true;
}

void TcpServer::incomingConnection(qintptr descriptor)
{
    auto socket = std::make_unique<QTcpSocket>(this);
    if (socket->setSocketDescriptor(descriptor))
        addPendingConnection(socket.release());
}

void TcpServer::servePending()
{
    while (QTcpSocket *const client = nextPendingConnection())
        serve(*client);
}

void TcpServer::serve(QTcpSocket &client)
{
    const Peer peer = peerOf(client);
    if (!m_rules.allowFrom.allows(peer.address)) {
        qCDebug(lcProtocol) << "Refused a connection from" << peer.address;
        delete &client;
        return;
    }
    connect(&client, &QTcpSocket::disconnected, this, [this, peer] { discardClient(peer.address); });
    client.setSocketOption(QAbstractSocket::KeepAliveOption, 1); // ends a connection whose peer lost power
    client.setSocketOption(QAbstractSocket::LowDelayOption, 1);  // the last chunk does not wait for the peer
    client.setSocketOption(QAbstractSocket::SendBufferSizeSocketOption, kSendBufferBytes);
    m_rebindPending = false;
    qCDebug(lcProtocol) << "New Connection from" << peer.address;
    m_consoles.serve(client, peer, LineRule::OneLinePerArrival);
}

void TcpServer::discardClient(const QHostAddress &peer)
{
    qCDebug(lcProtocol) << "Disconnected" << peer;
    if (std::exchange(m_rebindPending, false))
        listenOn(quint16(m_target.settings().port));
}

/// When the process runs out of descriptors, Qt stops accepting for good.
void TcpServer::resumeAcceptingLater()
{
    qCWarning(lcProtocol).noquote() << "Cannot accept a connection:" << errorString();
    QTimer::singleShot(kAcceptRetryDelay, this, [this] {
        if (isListening())
            resumeAccepting();
    });
}
