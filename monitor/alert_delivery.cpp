// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_delivery.h"

#include "monitor/alert_mail.h"
#include "monitor/monitor_log.h"
#include "monitor/smtp_sender.h"
#include "platform/event_log.h"

#include <QHostInfo>

namespace {

void reportEvent(const HealthReport &report, EventLog &eventLog)
{
    const bool isCritical = report.alertLevel == level::kCritical;
    Event event;
    event.source = QStringLiteral("Halvex");
    event.type = isCritical ? EventType::Error : EventType::Warning;
    event.id = isCritical ? 3 : 2;
    event.text = report.alertText;
    eventLog.report(event);
}

void sendMail(const HealthReport &report, const Settings &settings, smtp_sender &sender)
{
    if (sender.isBusy()) {
        qCDebug(lcMonitor) << "alert mail dropped: the one before is still under way";
        return;
    }
    sender.start(alertMail(report.alertLevel, report.alertText, settings, QHostInfo::localHostName(),
                           QDateTime::currentDateTime()));
}

} // namespace

void deliverAlert(const HealthReport &report, const Settings &settings, EventLog &eventLog,
                  smtp_sender &sender)
{
    if (report.alertLevel < level::kWarning)
        return;
    if (settings.logSysEvLog)
        reportEvent(report, eventLog);
    if (settings.emailNotify)
        sendMail(report, settings, sender);
}

bool startTestMail(smtp_sender &sender, const QString &parameters)
{
    if (sender.isBusy())
        return false;
    const auto mail = testMail(parameters);
    if (!mail)
        return false;
    sender.start(*mail);
    return true;
}
