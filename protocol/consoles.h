// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "protocol/conversation.h"
#include "protocol/dispatcher.h"
#include "wire/scrambling.h"

#include <QObject>

#include <algorithm>
#include <chrono>
#include <unordered_map>

/// Limits that keep any peer from taking more than its share.
struct ConnectionLimits
{
    int connections = 1000;                 ///< TCP and local together
    qint64 lineBytes = qint64{1024} * 1024; ///< a longer line closes its connection
    /// Data that all connections hold together. With the allocator's share this is less than 64 MB.
    qint64 heldBytes = qint64{48} * 1024 * 1024;
    /// From a request to disconnect to the end of the connection, for a peer that does not read its replies.
    std::chrono::milliseconds disconnectTime{30000};
};

/// All connections to consoles, TCP and local, and the limits that they share. Event loop's thread only.
class Consoles : public QObject
{
    Q_OBJECT

public:
    /// `target` outlives this object.
    Consoles(CommandTarget &target, OffsetSource offsets, const ConnectionLimits &limits);

    /// Serves the console at the other end of a connected QTcpSocket or QLocalSocket, which is deleted when
    /// the connection ends. At the limit of connections the longest idle one of the peer address with the
    /// most connections is closed first.
    template <typename Socket>
    Conversation &serve(Socket &socket, const Peer &peer, LineRule rule)
    {
        makeRoom();
        socket.setReadBufferSize(m_limits.lineBytes + 1);
        auto *const conversation = new Conversation(
            *this, socket,
            {[&socket] { socket.flush(); }, [&socket] { socket.close(); }, [&socket] { socket.abort(); }},
            peer, rule);
        connect(&socket, &Socket::readyRead, conversation, &Conversation::read);
        connect(&socket, &Socket::disconnected, conversation, &Conversation::end);
        connect(&socket, &Socket::disconnected, &socket, &QObject::deleteLater);
        m_heldBytes.emplace(conversation, 0);
        conversation->sendFirstLine();
        return *conversation;
    }

    [[nodiscard]] const ConnectionLimits &limits() const { return m_limits; }
    [[nodiscard]] Dispatcher &dispatcher() { return m_dispatcher; }
    [[nodiscard]] int drawOffset() const { return m_offsets(); }

    /// Returns the number of chunks that a connection writes before others take their turn. With a thousand
    /// that read, each one waits for the chunks of all others.
    [[nodiscard]] int chunksAtATime() const
    {
        constexpr int kChunksInAll = 64;
        constexpr int kMostChunks = 16;
        return std::clamp(kChunksInAll / int(m_heldBytes.size()), 1, kMostChunks);
    }

    /// Takes account of the memory that a conversation holds now. If all of them hold too much, the one that
    /// holds the most is closed.
    void limitMemory(Conversation &changed);

    /// The connection has ended.
    void remove(Conversation &conversation);

private:
    void makeRoom();

    const OffsetSource m_offsets;
    const ConnectionLimits m_limits;
    Dispatcher m_dispatcher;
    std::unordered_map<Conversation *, qint64> m_heldBytes; ///< of every open connection
    qint64 m_totalBytes = 0;
};
