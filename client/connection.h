// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/endpoint.h"
#include "client/failure.h"
#include "client/line_reader.h"

#include <QLockFile>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <memory>

namespace client {

class Link;

/// One connection to a service, driven by the event loop, so that several services can be asked at the same
/// time. One request is sent at a time, because the service would miss a second line. Every wait has a
/// deadline for the whole line, so that a peer that sends single bytes cannot prolong it.
///
/// After failed() the connection is closed until open(). Neither signal is emitted from within open() or
/// ask().
class Connection : public QObject
{
    Q_OBJECT
public:
    explicit Connection(Endpoint endpoint, QObject *parent = nullptr);

    /// Connects; lineArrived() then has the first line of the service. A local console waits for the lock of
    /// the socket before, for at most half of the time.
    void open(std::chrono::milliseconds deadline);

    /// Sends `request`. The connection must be open, and no other reply be awaited.
    void ask(const QString &request, std::chrono::milliseconds deadline);

    /// Sends a line that has no reply, and waits until it is sent, for at most `deadline`.
    void sendWithoutReply(const QString &request, std::chrono::milliseconds deadline);

    /// Closes the connection and releases the lock of the local socket.
    void close();

    [[nodiscard]] const Endpoint &endpoint() const { return m_endpoint; }

Q_SIGNALS:
    void lineArrived(const QString &text);
    void failed(const client::Failure &failure);

private:
    void connectWhenUnlocked();
    void readAvailable();
    void handleError(bool isUnreachable, const QString &text);
    void expire();
    void fail(FailureKind kind, const QString &text);

    Endpoint m_endpoint;
    Link *m_link = nullptr; ///< a child; null while closed
    LineReader m_reader;
    QTimer m_deadline;
    /// Used by local consoles only. The service answers only the latest local connection, so the consoles of
    /// a machine share the local socket by a lock file. It is advisory: a console that has waited long enough
    /// connects without it.
    std::unique_ptr<QLockFile> m_lock;
    QTimer m_lockRetry;
    bool m_isAwaiting = false;
};

} // namespace client
