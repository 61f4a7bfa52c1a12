// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/greeting.h"

#include "wire/separators.h"

#include <QStringList>

QString greeting(const Settings &settings, const QString &hostName, const QString &peer,
                 qint64 secondsSinceEpoch)
{
    return QStringLiteral("VER]![%1]![%2]![%3]![%4]![%5]![%8]![%9]![%10]![%11]![%12]![%13]![%14]![%15]![%16]!"
                          "[%17]![%18]![%19]![%20]![%21]![%6.%7]![%22]![%23")
        .arg(settings.versionText)
        .arg(settings.port)
        .arg(settings.smartPollInterval)
        .arg(settings.freeSpacePollInterval)
        .arg(hostName)
        .arg(peer)
        .arg(secondsSinceEpoch)
        .arg(settings.alertLevel)
        .arg(int(settings.popupNotify))
        .arg(int(settings.emailNotify))
        .arg(int(settings.logSysEvLog))
        .arg(settings.smtpFrom)
        .arg(settings.smtpTo)
        .arg(settings.smtpSubj)
        .arg(settings.smtpServer)
        .arg(settings.smtpPort)
        .arg(int(settings.smtpNeedAuth))
        .arg(settings.smtpUser)
        .arg(settings.smtpPass)
        .arg(settings.wTemp)
        .arg(settings.cTemp)
        .arg(settings.warnExtTask)
        .arg(settings.critExtTask);
}

QString versionReply(const Settings &settings, const QString &hostName)
{
    return QStringList{QStringLiteral("VER"),
                       settings.versionText,
                       QString::number(settings.port),
                       QString::number(settings.smartPollInterval),
                       QString::number(settings.freeSpacePollInterval),
                       hostName}
        .join(kRequestSeparator);
}
