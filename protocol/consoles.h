// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "protocol/scrambling.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <functional>

class CommandTarget;

/// What keeps peers from taking more than their share.
struct ConnectionLimits
{
    int connections = 1000;                        ///< TCP and local together; one more is closed at once
    qint64 lineBytes = qint64{1024} * 1024;        ///< a longer line closes its connection
    qint64 unsentBytes = qint64{16} * 1024 * 1024; ///< who leaves more unread and asks again is closed
};

/// What the two transports do alike for a console: the first line, the answer to a line, the limits. A
/// connection has no state of its own here; `peer` is the text that stands for its address in replies.
/// Event loop's thread only.
class Consoles : public QObject
{
    Q_OBJECT

public:
    /// What a line is answered. `wire` is empty when nothing is sent now.
    struct Answer
    {
        QByteArray wire;
        bool closes = false; ///< the connection ends once the answer is sent
    };

    /// Sends a line that comes later; does nothing when its connection has gone meanwhile.
    using LateReply = std::function<void(const QByteArray &wire)>;

    /// `target` outlives this object.
    Consoles(CommandTarget &target, OffsetSource offsets, const ConnectionLimits &limits);

    /// Counts a new connection until it is destroyed; false, and not counted, when there are too many.
    [[nodiscard]] bool admit(const QObject &connection);

    /// "PAUSED", "DETECTING" or the greeting.
    [[nodiscard]] QByteArray firstLine(const QString &peer) const;

    /// Carries out a line as it was received; CR and LF anywhere in it do not count.
    [[nodiscard]] Answer answer(QByteArray line, const QString &peer, const LateReply &lateReply) const;

    [[nodiscard]] const ConnectionLimits &limits() const { return m_limits; }

private:
    [[nodiscard]] QString replyText(const QStringList &fields, const QString &peer,
                                    const LateReply &lateReply) const;
    [[nodiscard]] QString smtpTest(const QStringList &fields, const LateReply &lateReply) const;

    CommandTarget &m_target;
    const OffsetSource m_offsets;
    const ConnectionLimits m_limits;
    int m_connectionCount = 0;
};
