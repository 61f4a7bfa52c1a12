// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/settings.h"

/// New values for the settings that consoles may set; see Settings.
struct SettingsChange
{
    quint32 port = 0;
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

void apply(const SettingsChange &change, Settings &settings);

/// Returns `change` as ProtectMail allows it: a console of the network cannot change how mail is sent, and an
/// empty password of a local one keeps the present password.
[[nodiscard]] SettingsChange withMailProtected(SettingsChange change, const Settings &present, bool isLocal);
