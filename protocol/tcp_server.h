// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/address_filter.h"
#include "protocol/consoles.h"

#include <QHostAddress>
#include <QTcpServer>

/// Which addresses consoles are served at, and from.
struct ListenRules
{
    QHostAddress address{QHostAddress::Any};
    AddressFilter allowFrom;
};

/// Serves consoles over TCP. Every connection is a child of the server and lives until the peer closes it,
/// sends DIS, or exceeds a limit.
class TcpServer : public QTcpServer
{
    Q_OBJECT

public:
    /// `target` outlives the server, or is the object that derives from it.
    TcpServer(CommandTarget &target, OffsetSource offsets, const ListenRules &rules,
              QObject *parent = nullptr, const ConnectionLimits &limits = {});

    /// Shared with the local connections.
    [[nodiscard]] Consoles &consoles() { return m_consoles; }

    /// Listens at `port`, IPv4 and IPv6; 0 takes a free port. On failure the server is no longer listening.
    bool listenOn(quint16 port);

protected:
    /// Moves the listener to the port of the settings when a client next disconnects. A client that connects
    /// before that cancels the move.
    void setRebindPending() { m_rebindPending = true; }

    void incomingConnection(qintptr descriptor) override;

private Q_SLOTS:
    void servePending();
    void discardClient(const QHostAddress &peer);
    void resumeAcceptingLater();

private:
    void serve(QTcpSocket &client);

    CommandTarget &m_target;
    const ListenRules m_rules;
    Consoles m_consoles;
    bool m_rebindPending = false;
};
