// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/mail_protection.h"

ServiceSettings withMailProtected(ServiceSettings change, const ServiceSettings &present, bool isLocal)
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
