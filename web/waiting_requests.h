// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/answer.h"

#include <memory>
#include <mutex>
#include <optional>
#include <set>

struct MHD_Connection;

namespace web {

/// A request whose response comes later. Its connection is suspended until then.
class WaitingRequest
{
public:
    explicit WaitingRequest(MHD_Connection *connection)
        : m_connection(connection)
    {}

    /// Takes the response and resumes the connection; every call but the first is ignored. Any thread.
    void finish(HttpResponse response);

    /// Returns the response, after finish().
    [[nodiscard]] std::optional<HttpResponse> takeResponse();

private:
    std::mutex m_mutex;
    MHD_Connection *m_connection; ///< valid until resumed; null after it
    std::optional<HttpResponse> m_response;
};

/// The requests that wait, so that a server that ends can answer all of them. May be used on any thread.
class WaitingRequests
{
public:
    /// Suspends `connection` and starts `deferred`; null after endAll().
    [[nodiscard]] std::shared_ptr<WaitingRequest> start(MHD_Connection *connection, const Deferred &deferred);

    void remove(const std::shared_ptr<WaitingRequest> &request);

    /// Answers all of them 503. None can be started after it.
    void endAll();

private:
    std::mutex m_mutex;
    std::set<std::shared_ptr<WaitingRequest>> m_requests;
    bool m_isEnded = false;
};

} // namespace web
