// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/short_replies.h"

#include "client/field_reader.h"

#include "wire/separators.h"

#include <QRegularExpression>
#include <QTimeZone>

namespace client {

std::optional<qint32> parseCount(const QString &reply, const QString &word)
{
    const auto payload = afterPrefix(reply, word + QLatin1Char(','));
    const auto count = payload ? strictNumber<qint32>(*payload) : std::nullopt;
    return count && *count >= 0 ? count : std::nullopt;
}

std::optional<UserAccount> parseUser(const QString &reply, qint32 index)
{
    const auto account = afterPrefix(reply, QStringLiteral("USERINFO,%1,").arg(index));
    if (!account)
        return std::nullopt;
    if (account->isEmpty())
        return UserAccount();
    // A name may hold commas; the level is always the last field.
    const int comma = int(account->lastIndexOf(QLatin1Char(',')));
    const UserAccount user{account->left(comma), account->mid(comma + 1)};
    const QStringList levels{QStringLiteral("Guest"), QStringLiteral("User"), QStringLiteral("Admin"),
                             QStringLiteral("Unknown")};
    if (comma < 1 || !levels.contains(user.level))
        return std::nullopt;
    return user;
}

std::optional<Rights> parseRights(const QString &reply)
{
    static const QRegularExpression kReply(QStringLiteral("\\AAUTH,([01]{3}),([^,]+)\\z"));
    const auto match = kReply.match(reply);
    const auto peerAndTime = parsePeerAndTime(match.captured(2));
    if (!match.hasMatch() || !peerAndTime)
        return std::nullopt;
    return Rights{match.captured(1), *peerAndTime};
}

std::optional<Version> parseVersion(const QString &reply)
{
    FieldReader fields(reply.split(QStringLiteral("]![")));
    if (fields.text() != QLatin1String("VER"))
        return std::nullopt;
    Version version;
    version.version = fields.text();
    version.port = fields.number<qint32>(0);
    version.intervals.smart = fields.number<qint64>();
    version.intervals.freeSpace = fields.number<qint64>();
    version.hostName = fields.text();
    if (!fields.fits())
        return std::nullopt;
    return version;
}

std::optional<Intervals> parseIntervals(const QString &reply)
{
    const auto payload = afterPrefix(reply, QStringLiteral("SETTIME_OK,"));
    if (!payload)
        return std::nullopt;
    FieldReader fields(payload->split(QLatin1Char(',')));
    Intervals intervals;
    intervals.smart = fields.number<qint64>(1);
    intervals.freeSpace = fields.number<qint64>(1);
    if (!fields.fits())
        return std::nullopt;
    return intervals;
}

std::optional<ServiceTime> parseServiceTime(const QString &reply)
{
    constexpr qint32 kLargestOffset = 14 * 3600;
    const auto payload = afterPrefix(reply, QStringLiteral("X-TIME_OK]!["));
    if (!payload)
        return std::nullopt;
    FieldReader fields(payload->split(kRequestSeparator));
    const auto seconds = fields.number<qint64>(0, std::numeric_limits<quint32>::max());
    const auto offset = fields.number<qint32>(-kLargestOffset, kLargestOffset);
    const QByteArray name = fields.text().toUtf8();
    const QByteArray translated = QTimeZone::windowsIdToDefaultIanaId(name); // empty for any other name
    const QTimeZone named(translated.isEmpty() ? name : translated);
    if (!fields.fits())
        return std::nullopt;
    // The name of another system's zone can be unknown here, or mean another zone.
    const QDateTime utc = QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC);
    const bool isNamed = named.isValid() && named.offsetFromUtc(utc) == offset;
    return ServiceTime{utc.toTimeZone(isNamed ? named : QTimeZone(offset))};
}

std::optional<MailOutcome> parseMailOutcome(const QString &reply)
{
    const auto text = afterPrefix(reply, QStringLiteral("SMTPTEST_OK]!["));
    if (!text)
        return std::nullopt;
    return MailOutcome{!text->startsWith(QLatin1String("SMTP error:")), *text};
}

} // namespace client
