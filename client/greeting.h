// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/level.h"
#include "wire/service_settings.h"

#include <QDateTime>
#include <QString>

#include <optional>

namespace client {

struct Greeting
{
    QString version;
    QString hostName;
    Level level = Level::NotRated; ///< the worst of all rated drives
    QString peer;                  ///< this console's IPv4 address as a number (0 over IPv6), or "Local"
    QDateTime time;                ///< the service's clock
    ServiceSettings settings;
};

/// Parses the first line of a service that is ready.
[[nodiscard]] std::optional<Greeting> parseGreeting(const QString &line);

/// "PEER.SECONDS" in the greeting and in the answer to AUTH.
struct PeerAndTime
{
    QString peer;
    QDateTime time;
};
[[nodiscard]] std::optional<PeerAndTime> parsePeerAndTime(const QString &text);

} // namespace client
