// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/connection.h"
#include "client/failure.h"
#include "client/greeting.h"
#include "client/requests.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QQueue>
#include <QTimer>

#include <chrono>
#include <functional>
#include <optional>
#include <utility>

namespace client {

/// Asks one service, one request after another, on the event loop of its thread. It connects when there is
/// something to ask, and takes the greeting first.
///
/// Each request ends in exactly one call of its handler, from the event loop and never from within ask():
/// with the parsed reply, or with the reason why there is none. Requests wait in a queue for those before
/// them. If the connection fails, all that are in the queue fail with it; the next ask() connects again. A
/// handler may call ask() and close(), and must not delete the conversation (deleteLater() is fine).
class Conversation : public QObject
{
    Q_OBJECT
public:
    using Milliseconds = std::chrono::milliseconds;

    /// `timeout` is the time for the connection with its greeting, and for each reply to a request without an
    /// allowance of its own.
    Conversation(const Endpoint &endpoint, Milliseconds timeout, QObject *parent = nullptr);

    /// `handler` is called with a Result<T>.
    template <typename T, typename Handler>
    void ask(const Request<T> &request, Handler handler)
    {
        const auto take = [parse = request.parse, isRaw = request.isRaw, handler = std::move(handler)](
                              const Result<QString> &reply) { handler(parsed<T>(reply, parse, isRaw)); };
        enqueue({request.line, request.allowance, request.isRaw, request.hasReply, take});
    }

    /// Connects, unless that is done, and calls `handler` with the Result<Greeting>.
    void greet(std::function<void(const Result<Greeting> &)> handler);

    /// Returns the greeting of the present connection, or of the latest one; nothing before the first.
    [[nodiscard]] const std::optional<Greeting> &greeting() const { return m_greeting; }

    /// From now on a service that does not answer, detects drives or is paused is asked again until it is
    /// ready, for at most `limit` after the first request. `waiting` is called once with the reason. A peer
    /// with another protocol is not asked again.
    void waitUntilReady(Milliseconds limit, std::function<void(const Failure &)> waiting);

    /// Ends the connection and drops all requests without calling their handlers. Other consoles of this
    /// machine can use the local socket until the next ask().
    void close();

    [[nodiscard]] const Endpoint &endpoint() const { return m_connection.endpoint(); }

private:
    struct Job
    {
        QString line;
        Milliseconds allowance;
        bool isRaw;
        bool hasReply;
        std::function<void(const Result<QString> &)> take;
    };

    enum class State { Closed, Connecting, Ready, Asking };

    template <typename T, typename Parse>
    static Result<T> parsed(const Result<QString> &reply, const Parse &parse, bool isRaw);

    void enqueue(Job job);
    void proceed();
    void takeLine(const QString &line);
    void takeFirstLine(const QString &line);
    void finish(const Result<QString> &reply);
    void fail(const Failure &failure);
    [[nodiscard]] bool retry(const Failure &failure);

    Connection m_connection;
    Milliseconds m_timeout;
    State m_state = State::Closed;
    QQueue<Job> m_jobs;
    QTimer m_next; ///< single-shot: calls proceed() from the event loop
    std::optional<Greeting> m_greeting;
    std::optional<Milliseconds> m_readyLimit;
    QDeadlineTimer m_readyDeadline;
    std::function<void(const Failure &)> m_waiting;
};

/// Returns the failure that `reply` means whatever was asked: the service is busy, or refuses. Nothing for
/// any other reply.
[[nodiscard]] std::optional<Failure> refusal(const QString &reply);

/// Returns the failure of a reply that does not fit its request.
[[nodiscard]] Failure notUnderstood(const QString &reply);

template <typename T, typename Parse>
Result<T> Conversation::parsed(const Result<QString> &reply, const Parse &parse, bool isRaw)
{
    if (!reply)
        return reply.failure();
    if (!isRaw) {
        if (auto failure = refusal(*reply))
            return *failure;
    }
    if (auto value = parse(*reply))
        return *std::move(value);
    return notUnderstood(*reply);
}

} // namespace client
