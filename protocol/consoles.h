// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "protocol/scrambling.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QThreadPool>

#include <functional>

class CommandTarget;
struct Reply;

/// What keeps peers from taking more than their share.
struct ConnectionLimits
{
    int connections = 1000;                   ///< TCP and local together; one more is closed at once
    qint64 lineBytes = qint64{1024} * 1024;   ///< a longer line closes its connection
    qint64 unreadBytes = qint64{1024} * 1024; ///< who leaves more unread is not heard until it has read on
};

/// What all conversations with consoles share: the first line, the answer to a line, the limits. It knows
/// nothing of a connection; `peer` is the text that stands for its address in replies. Event loop's thread
/// only.
class Consoles : public QObject
{
    Q_OBJECT

public:
    /// Sends a line that comes later, on the event loop's thread.
    using LateReply = std::function<void(const QByteArray &wire)>;

    /// What a line is answered.
    struct Answer
    {
        QByteArray wire;                  ///< what is sent now; empty when there is nothing
        std::function<QByteArray()> work; ///< if set, finds what is sent instead; see runElsewhere()
        bool closes = false;              ///< the connection ends once the answer is sent
    };

    /// `target` outlives this object.
    Consoles(CommandTarget &target, OffsetSource offsets, const ConnectionLimits &limits);

    /// Waits for the work under way.
    ~Consoles() override;

    /// Counts a new connection until it is destroyed; false, and not counted, when there are too many.
    [[nodiscard]] bool admit(const QObject &connection);

    /// "PAUSED", "DETECTING" or the greeting.
    [[nodiscard]] QByteArray firstLine(const QString &peer) const;

    /// Carries out a line as it was received; CR and LF anywhere in it do not count. `lateReply` is called
    /// when a reply comes that later lines need not wait for.
    [[nodiscard]] Answer answer(QByteArray line, const QString &peer, const LateReply &lateReply) const;

    /// Has another thread do an answer's work, after what it has been given before, and `done` called with
    /// the outcome on the event loop's thread; not called when `context` has been destroyed meanwhile.
    void runElsewhere(std::function<QByteArray()> work, const QObject &context, LateReply done);

    [[nodiscard]] const ConnectionLimits &limits() const { return m_limits; }

private:
    [[nodiscard]] Reply reply(const QStringList &fields, const QString &peer,
                              const LateReply &lateReply) const;
    [[nodiscard]] Reply smtpTest(const QStringList &fields, const LateReply &lateReply) const;

    CommandTarget &m_target;
    const OffsetSource m_offsets;
    const ConnectionLimits m_limits;
    int m_connectionCount = 0;
    QThreadPool m_worker; ///< of one thread: long texts take much memory while they are made
};
