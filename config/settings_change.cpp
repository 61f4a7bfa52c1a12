// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/settings_change.h"

void apply(const SettingsChange &change, Settings &settings)
{
    settings.port = change.port;
    settings.smartPollInterval = change.smartPollInterval;
    settings.freeSpacePollInterval = change.freeSpacePollInterval;
    settings.popupNotify = change.popupNotify;
    settings.emailNotify = change.emailNotify;
    settings.logSysEvLog = change.logSysEvLog;
    settings.smtpFrom = change.smtpFrom;
    settings.smtpTo = change.smtpTo;
    settings.smtpSubj = change.smtpSubj;
    settings.smtpServer = change.smtpServer;
    settings.smtpNeedAuth = change.smtpNeedAuth;
    settings.smtpUser = change.smtpUser;
    settings.smtpPass = change.smtpPass;
    settings.smtpPort = change.smtpPort;
    settings.wTemp = change.wTemp;
    settings.cTemp = change.cTemp;
    settings.warnExtTask = change.warnExtTask;
    settings.critExtTask = change.critExtTask;
}

SettingsChange withMailProtected(SettingsChange change, const Settings &present, bool isLocal)
{
    if (isLocal) {
        if (change.smtpPass.isEmpty())
            change.smtpPass = present.smtpPass;
        return change;
    }
    change.emailNotify = present.emailNotify;
    change.smtpFrom = present.smtpFrom;
    change.smtpTo = present.smtpTo;
    change.smtpSubj = present.smtpSubj;
    change.smtpServer = present.smtpServer;
    change.smtpNeedAuth = present.smtpNeedAuth;
    change.smtpUser = present.smtpUser;
    change.smtpPass = present.smtpPass;
    change.smtpPort = present.smtpPort;
    return change;
}
