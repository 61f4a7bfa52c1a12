// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/level.h"

#include <QDateTime>
#include <QString>

#include <optional>

namespace client {

/// The settings as a service reports them in its greeting and takes them back with SET.
struct ServiceSettings
{
    qint32 port = 0;
    qint64 smartPollInterval = 0;     ///< milliseconds
    qint64 freeSpacePollInterval = 0; ///< milliseconds
    bool popupNotify = false;
    bool emailNotify = false;
    bool logSysEvLog = false;
    QString smtpFrom;
    QString smtpTo;
    QString smtpSubj;
    QString smtpServer;
    bool smtpNeedAuth = false;
    QString smtpUser;
    QString smtpPass;
    qint32 smtpPort = 0;
    qint32 wTemp = 0; ///< degrees Celsius
    qint32 cTemp = 0; ///< degrees Celsius
    QString warnExtTask;
    QString critExtTask;
};

struct Greeting
{
    QString version;
    QString hostName;
    Level level = Level::NotRated; ///< the worst of all rated drives
    QString peer;                  ///< this console's IPv4 address as a number (0 over IPv6), or "Local"
    QDateTime time;                ///< the service's clock
    ServiceSettings settings;
};

/// The greeting that follows a connection to a service that is ready.
[[nodiscard]] std::optional<Greeting> parseGreeting(const QString &line);

/// "PEER.SECONDS", as in the greeting and in the answer to AUTH.
struct PeerAndTime
{
    QString peer;
    QDateTime time;
};
[[nodiscard]] std::optional<PeerAndTime> parsePeerAndTime(const QString &text);

} // namespace client
