// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/http_responses.h"

#include <microhttpd.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace web {

namespace {

constexpr size_t kChunk = size_t{32} * 1024;

const char *const kContentSecurityPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; connect-src 'self'; "
    "manifest-src 'self'; base-uri 'none'; form-action 'self'; frame-ancestors 'none'";

/// A text that is sent while it is made.
struct ChunkSource
{
    std::function<bool(QByteArray &)> next;
    QByteArray unsent;
    int sent = 0; ///< bytes of `unsent` that have been sent

    qint64 read(char *buffer, size_t size)
    {
        while (sent == unsent.size()) {
            unsent.clear();
            sent = 0;
            if (!next(unsent))
                return MHD_CONTENT_READER_END_OF_STREAM;
        }
        const int count = int(std::min(size, size_t(unsent.size() - sent)));
        std::memcpy(buffer, unsent.constData() + sent, size_t(count));
        sent += count;
        return count;
    }
};

/// Adds the headers that every response carries: what a browser must not do with it.
void addCommonHeaders(MHD_Response *response)
{
    static const std::pair<const char *, const char *> kHeaders[] = {
        {"Content-Security-Policy", kContentSecurityPolicy},
        {"X-Content-Type-Options", "nosniff"},
        {"Referrer-Policy", "same-origin"},
        {"Cross-Origin-Opener-Policy", "same-origin"},
        {"Cross-Origin-Resource-Policy", "same-origin"},
    };
    for (const auto &[name, value] : kHeaders)
        MHD_add_response_header(response, name, value);
}

} // namespace

MHD_Response *plainResponse(const HttpResponse &answer)
{
    auto *body = new QByteArray(answer.body);
    // The library only reads the bytes, whatever its parameter's type.
    MHD_Response *response = MHD_create_response_from_buffer_with_free_callback_cls(
        size_t(body->size()), const_cast<char *>(body->constData()),
        [](void *bytes) { delete static_cast<QByteArray *>(bytes); }, body);
    if (!response) {
        delete body;
        return nullptr;
    }
    addCommonHeaders(response);
    MHD_add_response_header(response, "Content-Type", answer.contentType.constData());
    bool hasCacheControl = false;
    for (const auto &[name, value] : answer.headers) {
        MHD_add_response_header(response, name.constData(), value.constData());
        hasCacheControl = hasCacheControl || name == "Cache-Control";
    }
    if (!hasCacheControl)
        MHD_add_response_header(response, "Cache-Control", "no-store");
    return response;
}

MHD_Response *chunkedResponse(const ChunkedText &text)
{
    auto *source = new ChunkSource{text.next, {}};
    MHD_Response *response = MHD_create_response_from_callback(
        MHD_SIZE_UNKNOWN, kChunk,
        [](void *cls, uint64_t, char *buffer, size_t size) {
            return ssize_t(static_cast<ChunkSource *>(cls)->read(buffer, size));
        },
        source, [](void *cls) { delete static_cast<ChunkSource *>(cls); });
    if (!response) {
        delete source;
        return nullptr;
    }
    addCommonHeaders(response);
    MHD_add_response_header(response, "Content-Type", text.contentType.constData());
    MHD_add_response_header(response, "Cache-Control", "no-store");
    return response;
}

void addStreamHeaders(MHD_Response *response)
{
    addCommonHeaders(response);
    MHD_add_response_header(response, "Content-Type", "text/event-stream");
    MHD_add_response_header(response, "Cache-Control", "no-store");
    MHD_add_response_header(response, "X-Accel-Buffering", "no"); // a proxy must pass each event on at once
}

} // namespace web
