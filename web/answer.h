// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/http_message.h"

#include <functional>
#include <variant>

namespace web {

/// Takes the response of a request that takes time. Called once, on any thread.
using Reply = std::function<void(HttpResponse)>;

/// An answer that comes later. `start` is called once, returns at once and passes the response to its
/// argument when there is one.
struct Deferred
{
    std::function<void(Reply)> start;
};

/// An endless stream of server-sent events. It ends when `isAllowed` returns false, which is asked before
/// each event, on the server's threads.
struct EventStream
{
    std::function<bool()> isAllowed;
};

/// A text that is made while it is sent.
struct ChunkedText
{
    QByteArray contentType;
    /// Appends the next part to its argument; false at the end. Called on one of the server's threads at a
    /// time.
    std::function<bool(QByteArray &)> next;
};

/// The result of a handler.
using Answer = std::variant<HttpResponse, Deferred, EventStream, ChunkedText>;

} // namespace web
