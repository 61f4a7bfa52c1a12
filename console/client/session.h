// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/client/connection.h"
#include "console/client/failure.h"
#include "console/client/greeting.h"

#include <QString>

#include <chrono>
#include <functional>
#include <optional>

namespace client {

/// The failure that `reply` stands for whatever was asked: the service is busy, or refuses. Nothing for
/// any other reply.
[[nodiscard]] std::optional<Failure> refusal(const QString &reply);

/// A reply that does not fit what was asked, for a message.
[[nodiscard]] Failure notUnderstood(const QString &reply);

/// What the first line of a connection says.
[[nodiscard]] Result<Greeting> greetingOf(const QString &firstLine);

/// Asks one service one thing after another, and waits. Each wait runs an event loop and ends with the
/// deadline at the latest.
class Session
{
public:
    using Milliseconds = std::chrono::milliseconds;

    /// `timeout` is allowed for the connection with its first line, and for each answer.
    Session(Endpoint endpoint, Milliseconds timeout);

    /// Connects, and takes the first line whatever it says.
    [[nodiscard]] Result<QString> connectToService();

    /// Connects, and takes the greeting; a service that is busy is a failure.
    [[nodiscard]] Result<Greeting> start();

    /// As start(), again and again until the service is ready or `patience` is over. A peer that does not
    /// speak the protocol is not waited for. `waiting` is told why, before the first time that it waits.
    [[nodiscard]] Result<Greeting> startWhenReady(
        Milliseconds patience, const std::function<void(const Failure &)> &waiting = [](const Failure &) {});

    /// The reply to `request`, whatever it says. `timeout` replaces the session's own for slow work.
    [[nodiscard]] Result<QString> ask(const QString &request, std::optional<Milliseconds> timeout = {});

    /// The reply to `request` as `parse` (text -> optional<value>) reads it.
    template <typename Parse>
    [[nodiscard]] auto query(const QString &request, Parse parse, std::optional<Milliseconds> timeout = {})
        -> Result<typename decltype(parse(QString()))::value_type>
    {
        const Result<QString> reply = ask(request, timeout);
        if (!reply)
            return reply.failure();
        if (auto failure = refusal(*reply))
            return *failure;
        if (auto value = parse(*reply))
            return *std::move(value);
        return notUnderstood(*reply);
    }

    /// Ends the connection, so that other local consoles have their turn; start() opens it again.
    void close() { m_connection.close(); }

    /// Sends a request that the service does not answer.
    void tell(const QString &request);

    [[nodiscard]] const Endpoint &endpoint() const { return m_connection.endpoint(); }
    [[nodiscard]] Milliseconds timeout() const { return m_timeout; }

private:
    Result<QString> await();

    Connection m_connection;
    Milliseconds m_timeout;
};

} // namespace client
