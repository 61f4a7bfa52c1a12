// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/event_streams.h"

#include <microhttpd.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace web {

struct EventStreams::Stream
{
    EventStreams &owner;
    MHD_Connection *connection;
    std::function<bool()> isAllowed;
    QByteArray unsent;         ///< of the text that is being read
    QList<QByteArray> pending; ///< names, each once
    bool needsComment = true;  ///< the first one makes the response's headers leave
    bool isSuspended = false;
    bool isEnded = false;
};

namespace {

constexpr size_t kBlock = 1024;

} // namespace

MHD_Response *EventStreams::open(MHD_Connection *connection, std::function<bool()> isAllowed)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_isEnded)
        return nullptr;
    auto *stream = new Stream{*this, connection, std::move(isAllowed), {}, {}};
    MHD_Response *response = MHD_create_response_from_callback(
        MHD_SIZE_UNKNOWN, kBlock,
        [](void *cls, uint64_t position, char *buffer, size_t size) {
            return ssize_t(read(cls, position, buffer, size));
        },
        stream, &EventStreams::release);
    if (response)
        m_streams.insert(stream);
    else
        delete stream;
    return response;
}

void EventStreams::publish(const QByteArray &name)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (Stream *stream : m_streams) {
        if (!stream->pending.contains(name))
            stream->pending.append(name);
        wake(*stream);
    }
}

void EventStreams::keepAlive()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (Stream *stream : m_streams) {
        stream->needsComment = true;
        wake(*stream);
    }
}

void EventStreams::endAll()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isEnded = true;
    for (Stream *stream : m_streams) {
        stream->isEnded = true;
        wake(*stream);
    }
}

void EventStreams::wake(Stream &stream)
{
    if (std::exchange(stream.isSuspended, false))
        MHD_resume_connection(stream.connection);
}

qint64 EventStreams::read(void *cls, quint64, char *buffer, size_t size)
{
    auto &stream = *static_cast<Stream *>(cls);
    const bool isAllowed = stream.isAllowed(); // takes a lock of its own
    const std::lock_guard<std::mutex> lock(stream.owner.m_mutex);
    if (stream.isEnded || !isAllowed)
        return MHD_CONTENT_READER_END_OF_STREAM;
    if (stream.unsent.isEmpty() && std::exchange(stream.needsComment, false))
        stream.unsent = ":\n\n";
    if (stream.unsent.isEmpty() && !stream.pending.isEmpty())
        stream.unsent = "data: " + stream.pending.takeFirst() + "\n\n";
    if (stream.unsent.isEmpty()) {
        stream.isSuspended = true;
        MHD_suspend_connection(stream.connection);
        return 0;
    }
    const int count = int(std::min(size, size_t(stream.unsent.size())));
    std::memcpy(buffer, stream.unsent.constData(), size_t(count));
    stream.unsent.remove(0, count);
    return count;
}

void EventStreams::release(void *cls)
{
    auto *stream = static_cast<Stream *>(cls);
    {
        const std::lock_guard<std::mutex> lock(stream->owner.m_mutex);
        stream->owner.m_streams.erase(stream);
    }
    delete stream;
}

} // namespace web
