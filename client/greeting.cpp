// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/greeting.h"

#include "client/field_reader.h"

namespace client {

std::optional<PeerAndTime> parsePeerAndTime(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char('.'));
    if (parts.size() != 2)
        return std::nullopt;
    const auto seconds = strictNumber<qint64>(parts.at(1));
    const bool isPeer = parts.at(0) == QLatin1String("Local") || strictNumber<quint32>(parts.at(0));
    if (!seconds || *seconds < 0 || !isPeer)
        return std::nullopt;
    return PeerAndTime{parts.at(0), QDateTime::fromSecsSinceEpoch(*seconds)};
}

std::optional<Greeting> parseGreeting(const QString &line)
{
    FieldReader fields(line.split(QStringLiteral("]![")));
    Greeting greeting;
    ServiceSettings &settings = greeting.settings;
    if (fields.text() != QLatin1String("VER"))
        return std::nullopt;
    greeting.version = fields.text();
    // The service's port is 16 bits wide on the network and 32 in its settings, which may hold anything.
    settings.port = fields.number<quint32>(0, quint32(std::numeric_limits<qint32>::max()));
    settings.smartPollInterval = fields.number<qint64>();
    settings.freeSpacePollInterval = fields.number<qint64>();
    greeting.hostName = fields.text();
    greeting.level = Level(fields.number<qint32>(0, 3));
    settings.popupNotify = fields.flag();
    settings.emailNotify = fields.flag();
    settings.logSysEvLog = fields.flag();
    settings.smtpFrom = fields.text();
    settings.smtpTo = fields.text();
    settings.smtpSubj = fields.text();
    settings.smtpServer = fields.text();
    settings.smtpPort = fields.number<qint32>();
    settings.smtpNeedAuth = fields.flag();
    settings.smtpUser = fields.text();
    settings.smtpPass = fields.text();
    settings.wTemp = fields.number<qint32>();
    settings.cTemp = fields.number<qint32>();
    const auto peerAndTime = parsePeerAndTime(fields.text());
    settings.warnExtTask = fields.text();
    settings.critExtTask = fields.text();
    if (!fields.fits() || !peerAndTime)
        return std::nullopt;
    greeting.peer = peerAndTime->peer;
    greeting.time = peerAndTime->time;
    return greeting;
}

} // namespace client
