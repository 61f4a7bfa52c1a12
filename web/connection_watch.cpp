// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/connection_watch.h"

#include "web/host.h"

#include <utility>

namespace web {

namespace {

constexpr qint64 kNoDeadline = -1;

qint64 allowedMs(ConnectionWatch::Phase phase)
{
    switch (phase) {
    case ConnectionWatch::Phase::FirstHeaders:
        return 10000;
    case ConnectionWatch::Phase::Body:
        return 30000;
    case ConnectionWatch::Phase::Idle:
        return 60000;
    case ConnectionWatch::Phase::Answering:
        break;
    }
    return kNoDeadline;
}

const QByteArray kTimeoutResponse = QByteArrayLiteral(
    "HTTP/1.1 408 Request Timeout\r\nConnection: close\r\nContent-Type: application/json\r\n"
    "Content-Length: 38\r\n\r\n{\"error\": \"the request took too long\"}");

} // namespace

ConnectionWatch::ConnectionWatch(QVector<QHostAddress> unlimitedAddresses, bool isPlain)
    : m_unlimited(std::move(unlimitedAddresses))
    , m_isPlain(isPlain)
{}

bool ConnectionWatch::mayConnect(const QHostAddress &address) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return isWithinLimit(address);
}

bool ConnectionWatch::isWithinLimit(const QHostAddress &address) const
{
    return m_unlimited.contains(address) || m_counts.value(address) < kMostOfOneAddress;
}

bool ConnectionWatch::opened(quintptr socket, const QHostAddress &address, qint64 nowMs)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!isWithinLimit(address))
        return false;
    m_connections.insert(socket, {address, Phase::FirstHeaders, nowMs});
    ++m_counts[address];
    return true;
}

void ConnectionWatch::closed(quintptr socket)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto connection = m_connections.find(socket);
    if (connection == m_connections.end())
        return;
    if (--m_counts[connection->address] <= 0)
        m_counts.remove(connection->address);
    m_connections.erase(connection);
}

void ConnectionWatch::enter(quintptr socket, Phase phase, qint64 nowMs)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto connection = m_connections.find(socket);
    if (connection == m_connections.end())
        return;
    connection->phase = phase;
    connection->since = nowMs;
}

void ConnectionWatch::endOverdue(qint64 nowMs)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (auto connection = m_connections.begin(); connection != m_connections.end(); ++connection) {
        const qint64 allowed = allowedMs(connection->phase);
        if (allowed == kNoDeadline || nowMs - connection->since < allowed)
            continue;
        const bool isRequestPending = connection->phase != Phase::Idle;
        host::endConnection(connection.key(),
                            m_isPlain && isRequestPending ? kTimeoutResponse : QByteArray());
        connection->phase = Phase::Answering; // the server notices the end by itself
    }
}

} // namespace web
