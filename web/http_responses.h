// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/answer.h"

struct MHD_Response;

/// The responses of the HTTP library. Each function returns one that the caller releases; null without
/// memory.
namespace web {

[[nodiscard]] MHD_Response *plainResponse(const HttpResponse &answer);
[[nodiscard]] MHD_Response *chunkedResponse(const ChunkedText &text);

/// Adds the headers of a stream of events.
void addStreamHeaders(MHD_Response *response);

} // namespace web
