// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/requests.h"

#include "console/client/field_reader.h"
#include "console/client/greeting.h"
#include "console/client/scans.h"

#include <QRegularExpression>

namespace client {

namespace {

QString request(const QStringList &fields)
{
    return fields.join(QStringLiteral("]!["));
}

QString number(qint64 value)
{
    return QString::number(value);
}

QString flag(bool value)
{
    return value ? QStringLiteral("1") : QStringLiteral("0");
}

QString payload(const QStringList &fields)
{
    return fields.join(QStringLiteral("~;"));
}

} // namespace

bool isPlainField(const QString &text)
{
    static const QRegularExpression kReserved(QStringLiteral("\\]!\\[|~;|[\\r\\n\\x{0}]|%L?[0-9]"));
    return !kReserved.match(text).hasMatch();
}

namespace requests {

QString driveInfo(qint32 drive)
{
    return request({QStringLiteral("DEVINFO"), number(drive)});
}

QString smartInfo(qint32 drive)
{
    return request({QStringLiteral("SMARTINFO"), number(drive)});
}

QString userInfo(qint32 index)
{
    return request({QStringLiteral("USERINFO"), number(index)});
}

QString authenticate(const QString &user, const QString &password)
{
    return request({QStringLiteral("AUTH"), user, password});
}

QString setIntervals(qint32 smartMilliseconds, qint32 freeSpaceMilliseconds)
{
    return request({QStringLiteral("SETTIME"), number(smartMilliseconds), number(freeSpaceMilliseconds)});
}

QString setSettings(const ServiceSettings &settings)
{
    const QStringList items{
        number(settings.port),
        number(settings.smartPollInterval),
        number(settings.freeSpacePollInterval),
        flag(settings.popupNotify),
        flag(settings.emailNotify),
        flag(settings.logSysEvLog),
        settings.smtpFrom,
        settings.smtpTo,
        settings.smtpSubj,
        settings.smtpServer,
        flag(settings.smtpNeedAuth),
        settings.smtpUser,
        settings.smtpPass,
        number(settings.smtpPort),
        number(settings.wTemp),
        number(settings.cTemp),
        settings.warnExtTask,
        settings.critExtTask,
    };
    return request({QStringLiteral("SET"), payload(items)});
}

QString testMail(const ServiceSettings &settings, const QString &body)
{
    const QStringList items{
        number(settings.smtpPort), flag(settings.smtpNeedAuth), settings.smtpFrom,
        settings.smtpTo,           settings.smtpServer,         settings.smtpSubj,
        settings.smtpUser,         settings.smtpPass,           body,
    };
    return request({QStringLiteral("SMTPTEST"), payload(items)});
}

QString temperatures(const QDateTime &from, const QDateTime &to)
{
    return request({QStringLiteral("GSTATD"), formatMoment(from), formatMoment(to)});
}

QString startScan(qint32 drive, qint32 blockSize, quint64 firstSector, quint64 lastSector)
{
    return request({QStringLiteral("STARTSCAN"), number(drive), number(blockSize),
                    QString::number(firstSector), QString::number(lastSector)});
}

QString stopScan(qint32 drive)
{
    return request({QStringLiteral("STOPSCAN"), number(drive)});
}

QString setSchedule(const ScheduleEntry &entry)
{
    // The last field has to be there and is not read.
    const QStringList fields{number(entry.drive), number(qint32(entry.kind)), number(entry.weekday),
                             formatMoment(QDateTime(entry.date, entry.time)), QStringLiteral("0")};
    return request({QStringLiteral("SETSCANSCHED"), payload(fields)});
}

} // namespace requests

} // namespace client
