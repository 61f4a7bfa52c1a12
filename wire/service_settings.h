// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

/// The settings that a service reports in its greeting and that SET replaces as a whole.
struct ServiceSettings
{
    quint32 port = 5000;
    qint64 smartPollInterval = 180000;     ///< milliseconds
    qint64 freeSpacePollInterval = 300000; ///< milliseconds
    bool popupNotify = true;
    bool emailNotify = false;
    bool logSysEvLog = false;
    QString smtpFrom;
    QString smtpTo;
    QString smtpSubj;
    QString smtpServer;
    bool smtpNeedAuth = false;
    QString smtpUser;
    QString smtpPass;
    qint32 smtpPort = 25;
    qint32 wTemp = 55;   ///< warning temperature, degrees Celsius
    qint32 cTemp = 65;   ///< critical temperature, degrees Celsius
    QString warnExtTask; ///< stored and reported, never started
    QString critExtTask; ///< stored and reported, never started
};
