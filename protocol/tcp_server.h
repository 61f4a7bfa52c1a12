// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "protocol/consoles.h"

#include <QTcpServer>

class Conversation;
class QTcpSocket;

/// Serves consoles over TCP. Every connection is a child of the server and lives until the peer goes, sends
/// DIS, or oversteps a limit.
class TcpServer : public QTcpServer
{
    Q_OBJECT

public:
    /// `target` outlives the server, or is the object that derives from it.
    TcpServer(CommandTarget &target, OffsetSource offsets, QObject *parent = nullptr,
              const ConnectionLimits &limits = {});

    /// What the local connections share with these.
    [[nodiscard]] Consoles &consoles() { return m_consoles; }

    /// Listens at `port` of all addresses, IPv4 and IPv6; 0 takes a free port. Isn't listening any more when
    /// it fails.
    bool listenOn(quint16 port);

protected:
    /// Has the listener move to the port of the settings when a client next disconnects. A client that
    /// connects before that takes it back.
    void setRebindPending() { m_rebindPending = true; }

    void incomingConnection(qintptr descriptor) override;

private Q_SLOTS:
    void readClient(QTcpSocket *socket, Conversation *conversation);
    void discardClient(QTcpSocket *socket);
    void resumeAcceptingLater();

private:
    CommandTarget &m_target;
    Consoles m_consoles;
    bool m_rebindPending = false;
};
