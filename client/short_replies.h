// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/greeting.h"

#include <QString>

#include <optional>

namespace client {

struct UserAccount
{
    QString name;
    QString level; ///< Guest, User, Admin or Unknown
};

struct Rights
{
    QString rights; ///< three characters, 0 or 1
    PeerAndTime peerAndTime;
};

/// Milliseconds.
struct Intervals
{
    qint64 smart = 0;
    qint64 freeSpace = 0;
};

struct Version
{
    QString version;
    qint32 port = 0;
    Intervals intervals;
    QString hostName;
};

/// Parses "WORD,COUNT"; a count is 0 or more.
[[nodiscard]] std::optional<qint32> parseCount(const QString &reply, const QString &word);
/// Name and level are empty if the service has no account `index`.
[[nodiscard]] std::optional<UserAccount> parseUser(const QString &reply, qint32 index);
[[nodiscard]] std::optional<Rights> parseRights(const QString &reply);
[[nodiscard]] std::optional<Version> parseVersion(const QString &reply);
/// The answer to SETTIME, when it was done.
[[nodiscard]] std::optional<Intervals> parseIntervals(const QString &reply);

/// The clock of the service.
struct ServiceTime
{
    QDateTime time; ///< in the service's time zone
};
[[nodiscard]] std::optional<ServiceTime> parseServiceTime(const QString &reply);

/// The outcome of a test mail.
struct MailOutcome
{
    bool isSent = false;
    QString text; ///< the dialogue with the mail server, or the error and the dialogue until then
};
[[nodiscard]] std::optional<MailOutcome> parseMailOutcome(const QString &reply);

} // namespace client
