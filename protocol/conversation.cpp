// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/conversation.h"

#include "protocol/consoles.h"
#include "protocol/dispatcher.h"
#include "protocol/logging.h"

#include <QPointer>
#include <QScopedValueRollback>

#include <utility>

namespace {

/// A connection without data: the socket and the conversation with their parts.
constexpr qint64 kConnectionBytes = 8 * 1024;

} // namespace

Conversation::Conversation(Consoles &consoles, QIODevice &socket, SocketActions actions, Peer peer,
                           LineRule rule)
    : QObject(&socket)
    , m_consoles(&consoles)
    , m_socket(socket)
    , m_actions(std::move(actions))
    , m_peer(std::move(peer))
    , m_rule(rule)
{
    m_lastActivity.start();
    m_endTimer.setSingleShot(true);
    m_endTimer.setInterval(consoles.limits().disconnectTime);
    connect(&m_endTimer, &QTimer::timeout, this, &Conversation::abort);
    connect(&socket, &QIODevice::bytesWritten, this, [this] {
        m_lastActivity.restart();
        writeReplies();
    });
}

Conversation::~Conversation()
{
    if (m_consoles)
        m_consoles->remove(*this);
}

qint64 Conversation::heldBytes() const
{
    qint64 bytes = kConnectionBytes + m_socket.bytesAvailable() + m_socket.bytesToWrite();
    for (const ReplyLine &reply : m_replies)
        bytes += reply.heldBytes();
    return bytes;
}

void Conversation::sendFirstLine()
{
    send(std::make_unique<ReplySource>(m_consoles->dispatcher().firstLine(m_peer)));
}

void Conversation::supersede()
{
    m_isSuperseded = true;
    read();
}

void Conversation::abort()
{
    end();
    m_actions.abort();
}

void Conversation::end()
{
    m_state = State::Ended;
    m_endTimer.stop();
    m_replies.clear();
    if (m_consoles)
        m_consoles->remove(*this);
}

void Conversation::read()
{
    if (m_state >= State::Closing)
        return;
    if (m_isSuperseded) {
        m_socket.readAll(); // with unread data the end of the connection would go unnoticed
        return;
    }
    const bool isByLines = m_rule == LineRule::OneLinePerArrival;
    const bool hasLine = isByLines ? m_socket.canReadLine() : m_socket.bytesAvailable() > 0;
    if (m_socket.bytesAvailable() > m_consoles->limits().lineBytes && !(isByLines && hasLine)) {
        qCDebug(lcProtocol).noquote() << "Closing the connection to" << m_peer.key() << ": line too long";
        abort();
        return;
    }
    if (hasLine && canAcceptLine())
        accept(isByLines ? m_socket.readLine() : m_socket.readAll());
    if (isBusy() && isDisconnectRequestNext())
        limitTimeToEnd();
    m_consoles->limitMemory(*this);
}

bool Conversation::canAcceptLine()
{
    const bool can = m_state == State::Serving && !isBusy();
    m_refusedLine = !can;
    return can;
}

void Conversation::accept(const QByteArray &line)
{
    m_lastActivity.restart();
    Reply reply = m_consoles->dispatcher().answer(line, m_peer);
    if (reply.closes) {
        m_state = State::Disconnecting;
        limitTimeToEnd();
    }
    if (!reply.start)
        return send(std::move(reply.source));
    m_awaitsReply = reply.isAwaited;
    // In a turn of its own: the next line may start an operation of the object that responds.
    reply.start([self = QPointer<Conversation>(this),
                 isAwaited = reply.isAwaited](std::unique_ptr<ReplySource> source) {
        if (!self)
            return;
        auto respond = [self = self.data(), isAwaited, source = std::move(source)]() mutable {
            if (isAwaited)
                self->m_awaitsReply = false;
            self->send(std::move(source));
        };
        QMetaObject::invokeMethod(self, std::move(respond), Qt::QueuedConnection);
    });
}

/// Null: nothing is sent.
void Conversation::send(std::unique_ptr<ReplySource> source)
{
    if (m_state >= State::Closing)
        return;
    if (source)
        m_replies.emplace_back(std::move(source), m_consoles->drawOffset());
    writeReplies();
    m_consoles->limitMemory(*this);
}

void Conversation::writeReplies()
{
    if (m_isWriting)
        return; // the socket reports what it writes below
    writeChunks();
    if (m_state >= State::Closing || isBusy())
        return;
    if (m_state == State::Disconnecting) {
        m_state = State::Closing;
        m_actions.close();
    } else if (m_refusedLine) {
        read();
    }
}

void Conversation::writeChunks()
{
    const QScopedValueRollback<bool> writing(m_isWriting, true);
    const int limit = m_consoles->chunksAtATime();
    for (int written = 0; !m_replies.empty() && hasRoomForChunk();) {
        ReplyLine &reply = m_replies.front();
        const QByteArray chunk = reply.next();
        if (chunk.isNull()) {
            qCWarning(lcProtocol).noquote()
                << "Closing the connection to" << m_peer.key() << ": the reply cannot be completed";
            abort();
            return;
        }
        m_socket.write(chunk);
        if (reply.nextSize() == 0)
            m_replies.pop_front();
        if (++written == limit)
            return; // the socket reports when it has sent the last one
        m_actions.flush();
    }
}

/// A socket that has not sent everything keeps less than one chunk more than it had.
bool Conversation::hasRoomForChunk() const
{
    const qint64 unsent = m_socket.bytesToWrite();
    return unsent == 0 || unsent + m_replies.front().nextSize() <= ReplyLine::kMaxChunkBytes;
}

void Conversation::limitTimeToEnd()
{
    if (!m_endTimer.isActive())
        m_endTimer.start();
}

/// A peer that does not read may have sent it all the same.
bool Conversation::isDisconnectRequestNext() const
{
    constexpr int kLongestRequest = 256;
    QByteArray line = m_socket.peek(kLongestRequest);
    if (m_rule == LineRule::OneLinePerArrival)
        line.truncate(line.indexOf('\n') + 1);
    return !line.isEmpty() && Dispatcher::isDisconnectRequest(line);
}
