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

/// Returns whether no process serves the socket file `name`. A server that is slow to answer still does.
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
    // QLocalServer closes itself without a signal when it has no descriptor for a new connection.
    connect(&m_reopenTimer, &QTimer::timeout, this, [this] {
        if (!isListening() && openListener())
            qCWarning(lcProtocol).noquote() << "Listening again under" << m_name;
    });
}

bool localDaemon::listen(const QString &name)
{
    m_name = name;
    if (!openListener()) {
        qCWarning(lcProtocol).noquote() << "Cannot listen under" << name << ":" << errorString();
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
    if (m_current)
        m_current->supersede();
    connect(socket, &QLocalSocket::disconnected, this, [] { qCDebug(lcProtocol, "Disconnected Local"); });
    qCDebug(lcProtocol, "New Connection from Local");
    m_current = &m_consoles.serve(*socket, {QStringLiteral("Local"), {}}, LineRule::ArrivalIsOneLine);
}
