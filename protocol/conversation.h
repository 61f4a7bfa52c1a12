// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "protocol/peer.h"
#include "protocol/reply_line.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QIODevice>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <deque>
#include <functional>
#include <memory>

class Consoles;

/// The rule for reading requests from a socket.
enum class LineRule {
    OneLinePerArrival, ///< one line each time data arrives; a second one waits until more data arrives
    ArrivalIsOneLine   ///< all that has arrived counts as one line
};

/// The functions that both kinds of socket have, besides reading and writing.
struct SocketActions
{
    std::function<void()> flush; ///< passes what the system accepts to it
    std::function<void()> close; ///< closes the connection when everything written has been sent
    std::function<void()> abort; ///< closes the connection at once
};

/// The service's side of one connection. Replies are sent in the order of the requests, and a line is not
/// accepted before the reply to the one before has been written; it stays in the socket until then. Child of
/// the socket; event loop's thread only.
class Conversation : public QObject
{
    Q_OBJECT

public:
    /// `socket` is connected. Must not be used after `consoles` has been destroyed.
    Conversation(Consoles &consoles, QIODevice &socket, SocketActions actions, Peer peer, LineRule rule);
    ~Conversation() override;

    [[nodiscard]] const Peer &peer() const { return m_peer; }
    /// Nanoseconds since a line was accepted, or a part of a reply was sent.
    [[nodiscard]] qint64 idleNs() const { return m_lastActivity.nsecsElapsed(); }

    /// Returns the memory that the connection holds, in bytes.
    [[nodiscard]] qint64 heldBytes() const;

    void sendFirstLine();

    /// Discards all further lines. Replies that are due are still sent.
    void supersede();

    /// Closes the connection at once and drops its replies.
    void abort();

public Q_SLOTS:
    /// Data has arrived.
    void read();
    /// The connection has ended.
    void end();

private:
    enum class State {
        Serving,
        Disconnecting, ///< the reply to the request to disconnect is being sent
        Closing,       ///< the socket sends what it still has
        Ended
    };

    [[nodiscard]] bool isBusy() const { return m_awaitsReply || !m_replies.empty(); }
    [[nodiscard]] bool canAcceptLine();
    void accept(const QByteArray &line);
    void send(std::unique_ptr<ReplySource> source);
    void writeReplies();
    void writeChunks();
    [[nodiscard]] bool hasRoomForChunk() const;
    void limitTimeToEnd();
    [[nodiscard]] bool isDisconnectRequestNext() const;

    const QPointer<Consoles> m_consoles;
    QIODevice &m_socket;
    const SocketActions m_actions;
    const Peer m_peer;
    const LineRule m_rule;
    std::deque<ReplyLine> m_replies; ///< the first one may be written in part
    QElapsedTimer m_lastActivity;
    QTimer m_endTimer;          ///< runs from the request to disconnect
    bool m_awaitsReply = false; ///< the reply to the last line is not known yet
    bool m_refusedLine = false; ///< data arrived that could not be accepted
    bool m_isWriting = false;
    bool m_isSuperseded = false;
    State m_state = State::Serving;
};
