// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QHash>
#include <QHostAddress>
#include <QVector>

#include <mutex>

namespace web {

/// Knows every connection of the server, refuses more than an address may have, and ends those that let a
/// deadline pass: the HTTP library's own timeout starts anew with each byte. May be used on any thread.
class ConnectionWatch
{
public:
    enum class Phase {
        FirstHeaders, ///< since the connection was made
        Body,
        Answering, ///< no deadline of its own
        Idle,      ///< since the last response, up to the end of the next headers
    };

    static constexpr int kMostOfOneAddress = 32;

    explicit ConnectionWatch(QVector<QHostAddress> unlimitedAddresses, bool isPlain);

    /// Returns whether a new connection from `address` is within its limit at this moment.
    [[nodiscard]] bool mayConnect(const QHostAddress &address) const;

    /// Counts a connection. Returns false, and does not count it, if it exceeds the limit of its address:
    /// mayConnect() may have been true for several threads at the same time. The caller must end it.
    [[nodiscard]] bool opened(quintptr socket, const QHostAddress &address, qint64 nowMs);
    /// Must be called before the descriptor is closed.
    void closed(quintptr socket);
    void enter(quintptr socket, Phase phase, qint64 nowMs);

    /// Ends the connections whose deadline has passed, over plain HTTP with a response 408.
    void endOverdue(qint64 nowMs);

private:
    [[nodiscard]] bool isWithinLimit(const QHostAddress &address) const;

    struct Connection
    {
        QHostAddress address;
        Phase phase = Phase::FirstHeaders;
        qint64 since = 0; ///< milliseconds of the caller's clock
    };

    const QVector<QHostAddress> m_unlimited;
    const bool m_isPlain;
    mutable std::mutex m_mutex;
    QHash<quintptr, Connection> m_connections; ///< by socket descriptor
    QHash<QHostAddress, int> m_counts;
};

} // namespace web
