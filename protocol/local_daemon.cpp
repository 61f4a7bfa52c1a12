// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/local_daemon.h"

#include "protocol/consoles.h"
#include "protocol/conversation.h"
#include "protocol/logging.h"

#include <QLocalSocket>

#include <chrono>

namespace {

constexpr std::chrono::seconds kReopenInterval{1};

/// Stands for the address of a peer on this machine.
QString localPeer()
{
    return QStringLiteral("Local");
}

/// Whether nobody serves the socket file `name`. A server that is only slow to answer is not gone.
bool isAbandoned(const QString &name)
{
    constexpr int probeMs = 500;
    QLocalSocket probe;
    probe.connectToServer(name);
    return !probe.waitForConnected(probeMs) && probe.error() == QLocalSocket::ConnectionRefusedError;
}

} // namespace

localDaemon::localDaemon(Consoles &consoles, QObject *parent)
    : QLocalServer(parent)
    , m_consoles(consoles)
{
    connect(this, &QLocalServer::newConnection, this, &localDaemon::incommingConnection);
    // QLocalServer closes itself, and tells nobody, when it has no descriptor for a new connection.
    connect(&m_reopenTimer, &QTimer::timeout, this, [this] {
        if (!isListening() && openListener())
            qCWarning(logProtocol).noquote() << "Listening again under" << m_name;
    });
}

bool localDaemon::listen(const QString &name)
{
    m_name = name;
    if (!openListener()) {
        qCWarning(logProtocol).noquote() << "Cannot listen under" << name << ":" << errorString();
        return false;
    }
    m_reopenTimer.start(kReopenInterval);
    return true;
}

bool localDaemon::openListener()
{
    if (QLocalServer::listen(m_name))
        return true;
    const bool replaceable = serverError() == QAbstractSocket::AddressInUseError && isAbandoned(m_name);
    return replaceable && removeServer(m_name) && QLocalServer::listen(m_name);
}

void localDaemon::incommingConnection()
{
    QLocalSocket *const socket = nextPendingConnection();
    if (socket == nullptr)
        return;
    if (!m_consoles.admit(*socket)) {
        socket->abort();
        socket->deleteLater();
        return;
    }
    m_current = socket;
    socket->setReadBufferSize(m_consoles.limits().lineBytes + 1);
    auto *const conversation = new Conversation(m_consoles, *socket, localPeer());
    const auto read = [this, socket, conversation] {
        if (socket == m_current)
            readLocalConnection(conversation);
        else
            socket->readAll(); // unread bytes would keep us from learning that it has gone
    };
    connect(socket, &QLocalSocket::readyRead, this, read);
    connect(conversation, &Conversation::mayTakeLineAgain, this, read);
    connect(conversation, &Conversation::finished, socket, &QLocalSocket::disconnectFromServer);
    connect(socket, &QLocalSocket::disconnected, conversation, &Conversation::end);
    connect(socket, &QLocalSocket::disconnected, this, [this, socket] { disconnectLocalConnection(socket); });
    conversation->sendFirstLine();
    qCDebug(logProtocol, "New Connection from Local");
}

/// All that has arrived counts as one line: a partial line, or two at once, do not unscramble.
void localDaemon::readLocalConnection(Conversation *conversation)
{
    if (m_current->bytesAvailable() > m_consoles.limits().lineBytes) {
        qCDebug(logProtocol, "Dropping the local connection for a line too long");
        m_current->abort();
    } else if (conversation->mayTakeLine()) {
        conversation->answer(m_current->readAll());
    }
}

void localDaemon::disconnectLocalConnection(QLocalSocket *socket)
{
    socket->disconnect(this);
    socket->deleteLater();
    qCDebug(logProtocol, "Disconnected Local");
}
