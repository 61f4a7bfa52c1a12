// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/tcp_server.h"

#include "protocol/command_target.h"
#include "protocol/logging.h"

#include <QHostAddress>
#include <QPointer>
#include <QTcpSocket>
#include <QTimer>

#include <chrono>
#include <memory>
#include <utility>

namespace {

constexpr std::chrono::seconds kAcceptRetryDelay{1};

/// The peer's IPv4 address as one decimal number, 0 when it has none.
QString peerText(const QTcpSocket &socket)
{
    return QString::number(socket.peerAddress().toIPv4Address());
}

} // namespace

TcpServer::TcpServer(CommandTarget &target, OffsetSource offsets, QObject *parent,
                     const ConnectionLimits &limits)
    : QTcpServer(parent)
    , m_target(target)
    , m_consoles(target, std::move(offsets), limits)
{
    connect(this, &QTcpServer::acceptError, this, &TcpServer::resumeAcceptingLater);
}

bool TcpServer::listenOn(quint16 port)
{
    close();
    const bool listening = listen(QHostAddress::Any, port);
    if (listening)
        qCInfo(logProtocol, "Listening port: %d", serverPort());
    else
        qCWarning(logProtocol).noquote() << "Cannot listen at port" << port << ":" << errorString();
    return listening;
}

void TcpServer::incomingConnection(qintptr descriptor)
{
    auto socket = std::make_unique<QTcpSocket>(this);
    if (!socket->setSocketDescriptor(descriptor) || !m_consoles.admit(*socket))
        return;
    QTcpSocket *const client = socket.release();
    connect(client, &QTcpSocket::readyRead, this, [this, client] { readClient(client); });
    connect(client, &QTcpSocket::disconnected, this, [this, client] { discardClient(client); });
    client->setReadBufferSize(m_consoles.limits().lineBytes + 1);
    client->setSocketOption(QAbstractSocket::KeepAliveOption, 1); // a peer that lost power goes some day
    m_rebindPending = false;
    client->write(m_consoles.firstLine(peerText(*client)));
    qCDebug(logProtocol) << "New Connection from" << client->peerAddress();
}

/// Takes one line: a second one that is here already waits for more data to arrive.
void TcpServer::readClient(QTcpSocket *socket)
{
    const ConnectionLimits &limits = m_consoles.limits();
    const bool hasLine = socket->canReadLine();
    if (!hasLine && socket->bytesAvailable() <= limits.lineBytes)
        return;
    if (!hasLine || socket->bytesToWrite() > limits.unsentBytes) {
        qCDebug(logProtocol) << "Dropping" << socket->peerAddress()
                             << "for a line too long or replies unread";
        socket->abort();
        return;
    }
    const auto lateReply = [client = QPointer<QTcpSocket>(socket)](const QByteArray &wire) {
        if (client && client->state() == QAbstractSocket::ConnectedState)
            client->write(wire);
    };
    const Consoles::Answer answer = m_consoles.answer(socket->readLine(), peerText(*socket), lateReply);
    socket->write(answer.wire);
    if (answer.closes)
        socket->close(); // sends what is pending first, and takes no more lines
}

void TcpServer::discardClient(QTcpSocket *socket)
{
    qCDebug(logProtocol) << "Disconnected" << socket->peerAddress();
    socket->deleteLater();
    if (std::exchange(m_rebindPending, false))
        listenOn(quint16(m_target.settings().port));
}

/// When the process runs out of descriptors Qt stops accepting and would never start again.
void TcpServer::resumeAcceptingLater()
{
    qCWarning(logProtocol).noquote() << "Cannot accept a connection:" << errorString();
    QTimer::singleShot(kAcceptRetryDelay, this, [this] {
        if (isListening())
            resumeAccepting();
    });
}
