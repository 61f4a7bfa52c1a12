// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/conversation.h"

#include "protocol/consoles.h"

#include <QPointer>

#include <utility>

Conversation::Conversation(Consoles &consoles, QIODevice &socket, QString peer)
    : QObject(&socket)
    , m_consoles(consoles)
    , m_socket(socket)
    , m_peer(std::move(peer))
{
    connect(&socket, &QIODevice::bytesWritten, this, &Conversation::goOn);
}

void Conversation::sendFirstLine()
{
    send(m_consoles.firstLine(m_peer));
}

bool Conversation::mayTakeLine()
{
    const bool may = !m_isOver && !m_awaitsWork && m_socket.bytesToWrite() <= m_consoles.limits().unreadBytes;
    m_owesTurn = !may;
    return may;
}

void Conversation::answer(const QByteArray &line)
{
    const auto lateReply = [self = QPointer<Conversation>(this)](const QByteArray &wire) {
        if (self)
            self->send(wire);
    };
    Consoles::Answer answer = m_consoles.answer(line, m_peer, lateReply);
    if (answer.work) {
        m_awaitsWork = true;
        m_consoles.runElsewhere(std::move(answer.work), *this, [this](const QByteArray &wire) {
            m_awaitsWork = false;
            send(wire);
            goOn();
        });
        return;
    }
    send(answer.wire);
    if (answer.closes) {
        end();
        Q_EMIT finished();
    }
}

void Conversation::send(const QByteArray &wire)
{
    if (!m_isOver)
        m_socket.write(wire);
}

void Conversation::goOn()
{
    if (m_owesTurn && mayTakeLine())
        Q_EMIT mayTakeLineAgain();
}
