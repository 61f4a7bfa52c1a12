// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/answer.h"

#include <QByteArray>
#include <QSet>

#include <functional>
#include <memory>
#include <mutex>
#include <set>

struct MHD_Connection;
struct MHD_Response;

namespace web {

/// The event streams that are open. A stream holds each name once until its client has read it, so a slow
/// client costs no more memory than there are names. May be used on any thread.
class EventStreams
{
public:
    EventStreams() = default;
    EventStreams(const EventStreams &) = delete;
    EventStreams &operator=(const EventStreams &) = delete;

    /// Returns the response that streams to `connection`; null after endAll(). The caller releases it.
    [[nodiscard]] MHD_Response *open(MHD_Connection *connection, std::function<bool()> isAllowed);

    /// Sends the event `name` to every stream.
    void publish(const QByteArray &name);

    /// Sends a comment to every stream, so that both ends notice a connection that is gone.
    void keepAlive();

    /// Ends every stream. None can be opened after it.
    void endAll();

private:
    struct Stream;

    static qint64 read(void *stream, quint64 position, char *buffer, size_t size);
    static void release(void *stream);
    static void wake(Stream &stream);

    std::mutex m_mutex;
    std::set<Stream *> m_streams; ///< the HTTP library owns them through their responses
    bool m_isEnded = false;
};

} // namespace web
