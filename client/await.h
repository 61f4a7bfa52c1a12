// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/conversation.h"

#include <QEventLoop>

#include <optional>

namespace client {

/// Calls `start` with a handler and waits for the result in an event loop of its own. The wait ends with the
/// operation's deadline at the latest. For programs that do one thing at a time.
template <typename T, typename Start>
[[nodiscard]] Result<T> awaitResult(Start start)
{
    std::optional<Result<T>> result;
    QEventLoop loop;
    start([&](const Result<T> &value) {
        result.emplace(value);
        loop.quit();
    });
    loop.exec();
    return result.value_or(Failure{FailureKind::Closed, QStringLiteral("interrupted")});
}

/// Asks and waits for the reply.
template <typename T>
[[nodiscard]] Result<T> await(Conversation &conversation, const Request<T> &request)
{
    return awaitResult<T>([&](const auto &handler) { conversation.ask(request, handler); });
}

/// Connects and waits for the greeting.
[[nodiscard]] inline Result<Greeting> awaitGreeting(Conversation &conversation)
{
    return awaitResult<Greeting>([&](const auto &handler) { conversation.greet(handler); });
}

} // namespace client
