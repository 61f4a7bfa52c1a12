// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/waiting_requests.h"

#include <microhttpd.h>

#include <utility>

namespace web {

void WaitingRequest::finish(HttpResponse response)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_connection)
        return;
    m_response = std::move(response);
    MHD_resume_connection(std::exchange(m_connection, nullptr));
}

std::optional<HttpResponse> WaitingRequest::takeResponse()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_response, std::nullopt);
}

std::shared_ptr<WaitingRequest> WaitingRequests::start(MHD_Connection *connection, const Deferred &deferred)
{
    auto request = std::make_shared<WaitingRequest>(connection);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_isEnded)
            return nullptr;
        m_requests.insert(request);
        MHD_suspend_connection(connection);
    }
    deferred.start([request](HttpResponse response) { request->finish(std::move(response)); });
    return request;
}

void WaitingRequests::remove(const std::shared_ptr<WaitingRequest> &request)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_requests.erase(request);
}

void WaitingRequests::endAll()
{
    std::set<std::shared_ptr<WaitingRequest>> requests;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnded = true;
        requests.swap(m_requests);
    }
    for (const auto &request : requests)
        request->finish(errorResponse(503, QStringLiteral("the server is stopping")));
}

} // namespace web
