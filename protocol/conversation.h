// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QObject>
#include <QString>

class Consoles;

/// The service's side of one connection, whatever its transport. Answers go out in the order of the lines,
/// and a line is not taken before the answer to the one before is on its way and the peer has read most of
/// what it was sent; it stays where it is until then. Child of the socket; event loop's thread only.
class Conversation : public QObject
{
    Q_OBJECT

public:
    /// `socket` is connected. `consoles` outlives it.
    Conversation(Consoles &consoles, QIODevice &socket, QString peer);

    void sendFirstLine();

    /// Whether a line may be taken now. If not, mayTakeLineAgain() follows.
    [[nodiscard]] bool mayTakeLine();

    /// Carries out a line as it was received.
    void answer(const QByteArray &line);

    /// Nothing is taken or sent any more, but for what has been written already.
    void end() { m_isOver = true; }

Q_SIGNALS:
    /// A line was refused before, and would be taken now.
    void mayTakeLineAgain();

    /// The peer has said DIS and been answered.
    void finished();

private:
    void send(const QByteArray &wire);
    void goOn();

    Consoles &m_consoles;
    QIODevice &m_socket;
    const QString m_peer;
    bool m_isOver = false;
    bool m_awaitsWork = false;
    bool m_owesTurn = false; ///< a line was refused
};
