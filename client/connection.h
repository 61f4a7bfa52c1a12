// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/client/endpoint.h"
#include "console/client/failure.h"
#include "console/client/line_reader.h"
#include "console/client/local_turn.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <optional>

namespace client {

class Link;

/// One connection to a service, driven by the event loop, so that several can be asked at the same time.
/// Strictly a line asked, a line answered: the service reads one line at a time and would miss a second
/// one. Every wait has a deadline for the whole line: a peer that sends a byte now and then gains nothing.
///
/// After failed() the connection is closed and only open() revives it. Neither signal is sent from within
/// open() or ask().
class Connection : public QObject
{
    Q_OBJECT
public:
    explicit Connection(Endpoint endpoint, QObject *parent = nullptr);

    /// Connects; the first line that the service sends is the answer. A local console waits for its turn
    /// before, for half the time at most.
    void open(std::chrono::milliseconds deadline);

    /// Sends `request` once the connection is open and no other answer is awaited.
    void ask(const QString &request, std::chrono::milliseconds deadline);

    /// Sends a line that no answer follows, and waits until it has left, at most `deadline`.
    void tell(const QString &request, std::chrono::milliseconds deadline);

    /// Also ends a local console's turn: who asks now and then closes in between.
    void close();

    [[nodiscard]] const Endpoint &endpoint() const { return m_endpoint; }

Q_SIGNALS:
    void lineArrived(const QString &text);
    void failed(const client::Failure &failure);

private:
    void awaitTurn();
    void readAvailable();
    void handleError(bool isUnreachable, const QString &text);
    void expire();
    void fail(FailureKind kind, const QString &text);

    Endpoint m_endpoint;
    Link *m_link = nullptr; ///< a child; null while closed
    LineReader m_reader;
    QTimer m_deadline;
    std::optional<LocalTurn> m_turn; ///< of a local console only
    QTimer m_turnRetry;
    bool m_isAwaiting = false;
};

} // namespace client
