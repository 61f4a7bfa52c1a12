// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/tcp_server.h"

#include "protocol/command_target.h"
#include "protocol/conversation.h"
#include "protocol/logging.h"

#include <QHostAddress>
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
    auto *const conversation = new Conversation(m_consoles, *client, peerText(*client));
    const auto read = [this, client, conversation] { readClient(client, conversation); };
    connect(client, &QTcpSocket::readyRead, this, read);
    connect(conversation, &Conversation::mayTakeLineAgain, this, read);
    // Sends what is pending first.
    connect(conversation, &Conversation::finished, client, &QTcpSocket::close);
    connect(client, &QTcpSocket::disconnected, conversation, &Conversation::end);
    connect(client, &QTcpSocket::disconnected, this, [this, client] { discardClient(client); });
    client->setReadBufferSize(m_consoles.limits().lineBytes + 1);
    client->setSocketOption(QAbstractSocket::KeepAliveOption, 1); // a peer that lost power goes some day
    m_rebindPending = false;
    conversation->sendFirstLine();
    qCDebug(logProtocol) << "New Connection from" << client->peerAddress();
}

/// Takes one line: a second one that is here already waits for more data to arrive.
void TcpServer::readClient(QTcpSocket *socket, Conversation *conversation)
{
    if (socket->canReadLine()) {
        if (conversation->mayTakeLine())
            conversation->answer(socket->readLine());
    } else if (socket->bytesAvailable() > m_consoles.limits().lineBytes) {
        qCDebug(logProtocol) << "Dropping" << socket->peerAddress() << "for a line too long";
        socket->abort();
    }
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
