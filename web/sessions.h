// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/configuration.h"

#include <QByteArray>
#include <QHash>
#include <QHostAddress>
#include <QString>
#include <QVector>

#include <mutex>
#include <optional>

namespace web {

/// A moment in seconds since 1970, passed in so that rules need no clock.
using Seconds = qint64;

struct Identity
{
    QString name;
    Role role = Role::Reader;
};

/// The logins that are valid now. Kept in memory alone: a restart ends all of them. Every function may be
/// called on any thread.
class Sessions
{
public:
    static constexpr Seconds kLifetime = Seconds{12} * 60 * 60;

    /// Starts a session and returns its new token. `previous` ends: a token that was known before a login
    /// never becomes a session of the user.
    [[nodiscard]] QByteArray start(const Identity &identity, const QByteArray &previous, Seconds now);

    void end(const QByteArray &token);

    /// Returns whose session `token` is; nullopt if it is unknown or has expired.
    [[nodiscard]] std::optional<Identity> find(const QByteArray &token, Seconds now);

private:
    struct Session
    {
        Identity identity;
        Seconds expires = 0;
    };

    void dropExpired(Seconds now);

    std::mutex m_mutex;
    QHash<QByteArray, Session> m_sessions; ///< by token
};

/// Counts failed logins of each address. Every function may be called on any thread.
class LoginLimit
{
public:
    static constexpr int kFailures = 5; ///< of one address within kWindow
    static constexpr Seconds kWindow = 60;

    /// Returns whether a login of `address` may be checked now, and counts it as failed until succeeded().
    /// Counting first keeps simultaneous attempts within the limit.
    [[nodiscard]] bool begin(const QHostAddress &address, Seconds now);
    void succeeded(const QHostAddress &address);

private:
    std::mutex m_mutex;
    QHash<QString, QVector<Seconds>> m_failures; ///< by address; of IPv6 by its network of 64 bits
};

} // namespace web
