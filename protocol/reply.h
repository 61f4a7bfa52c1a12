// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "protocol/reply_source.h"

#include <QString>

#include <functional>
#include <memory>
#include <utility>

/// Receives a reply that takes time. Must be called exactly once, on the event loop's thread; may be called
/// after the connection has gone.
using Respond = std::function<void(std::unique_ptr<ReplySource> source)>;

/// The reply to a request.
struct Reply
{
    Reply() = default;
    Reply(const QString &text) // NOLINT(google-explicit-constructor): most replies are a text
        : source(std::make_unique<ReplySource>(text))
    {}
    Reply(std::unique_ptr<ReplySource> replySource) // NOLINT(google-explicit-constructor): as above
        : source(std::move(replySource))
    {}

    /// Returns a reply that the function starts to work on. The next request waits until it is there.
    [[nodiscard]] static Reply awaited(std::function<void(Respond)> start)
    {
        return {std::move(start), true};
    }
    /// The same, but the next requests are carried out meanwhile.
    [[nodiscard]] static Reply later(std::function<void(Respond)> start) { return {std::move(start), false}; }

    std::unique_ptr<ReplySource> source; ///< null: nothing is sent now
    std::function<void(Respond)> start;  ///< if set, called for the reply
    bool isAwaited = false;
    bool closes = false; ///< the connection ends after the reply

private:
    Reply(std::function<void(Respond)> startReply, bool awaits)
        : start(std::move(startReply))
        , isAwaited(awaits)
    {}
};
