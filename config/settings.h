// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

/// Everything that can be set, and the service-wide alert level. One instance, owned by the program entry;
/// the event loop's thread alone touches it.
struct Settings
{
    quint32 port = 5000;
    qint64 smartPollInterval = 180000;     ///< milliseconds
    qint64 freeSpacePollInterval = 300000; ///< milliseconds
    qint32 alertLevel = 0;                 ///< see namespace level; not stored
    qint32 cTemp = 65;                     ///< critical temperature, degrees Celsius
    qint32 wTemp = 55;                     ///< warning temperature, degrees Celsius
    QString versionText = QStringLiteral("Halvex Service v 5.0.5");
    QString programDirectory = QStringLiteral("C:/"); ///< ends with a separator
    bool popupNotify = true;
    bool emailNotify = false;
    bool logSysEvLog = false;
    bool smtpNeedAuth = false;
    QString smtpFrom;
    QString smtpTo;
    QString smtpSubj;
    QString smtpServer;
    qint32 smtpPort = 25;
    QString smtpUser;
    QString smtpPass;
    QString warnExtTask; ///< stored and reported, never started
    QString critExtTask; ///< stored and reported, never started
};
