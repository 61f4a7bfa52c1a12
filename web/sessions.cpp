// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/sessions.h"

#include "web/passwords.h"

#include <QPair>

#include <algorithm>

namespace web {

namespace {

constexpr int kTokenBytes = 32;
constexpr int kMostSessions = 1000;
constexpr int kMostAddresses = 10000;
constexpr int kNetworkBits = 64; ///< one customer usually has a whole network of this prefix length

QString addressKey(const QHostAddress &address)
{
    bool isIpv4 = false;
    const quint32 ipv4 = address.toIPv4Address(&isIpv4);
    if (isIpv4)
        return QHostAddress(ipv4).toString();
    Q_IPV6ADDR bytes = address.toIPv6Address();
    std::fill(bytes.c + kNetworkBits / 8, bytes.c + sizeof bytes.c, quint8(0));
    return QHostAddress(bytes).toString();
}

} // namespace

QByteArray Sessions::start(const Identity &identity, const QByteArray &previous, Seconds now)
{
    const QByteArray token =
        randomBytes(kTokenBytes).toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_sessions.remove(previous);
    dropExpired(now);
    while (m_sessions.size() >= kMostSessions) {
        const auto oldest =
            std::min_element(m_sessions.begin(), m_sessions.end(),
                             [](const Session &a, const Session &b) { return a.expires < b.expires; });
        m_sessions.erase(oldest);
    }
    m_sessions.insert(token, {identity, now + kLifetime});
    return token;
}

void Sessions::end(const QByteArray &token)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_sessions.remove(token);
}

std::optional<Identity> Sessions::find(const QByteArray &token, Seconds now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto session = m_sessions.constFind(token);
    if (session == m_sessions.constEnd() || session->expires <= now)
        return std::nullopt;
    return session->identity;
}

void Sessions::dropExpired(Seconds now)
{
    for (auto session = m_sessions.begin(); session != m_sessions.end();)
        session = session->expires <= now ? m_sessions.erase(session) : std::next(session);
}

bool LoginLimit::begin(const QHostAddress &address, Seconds now)
{
    const QString key = addressKey(address);
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_failures.size() >= kMostAddresses && !m_failures.contains(key))
        m_failures.clear(); // bounded memory matters more than the rest of a minute
    QVector<Seconds> &failures = m_failures[key];
    failures.erase(std::remove_if(failures.begin(), failures.end(),
                                  [now](Seconds time) { return time <= now - kWindow; }),
                   failures.end());
    if (failures.size() >= kFailures)
        return false;
    failures.append(now);
    return true;
}

void LoginLimit::succeeded(const QHostAddress &address)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto failures = m_failures.find(addressKey(address));
    if (failures == m_failures.end())
        return;
    failures->removeLast();
    if (failures->isEmpty())
        m_failures.erase(failures);
}

} // namespace web
