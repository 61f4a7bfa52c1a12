// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_delivery.h"

#include "monitor/alert_mail.h"
#include "monitor/logging.h"
#include "monitor/mail_run.h"
#include "monitor/smtp_sender.h"
#include "platform/event_log.h"

#include <QHostInfo>

namespace {

void logChange(const QString &text)
{
    if (!text.isEmpty())
        qCWarning(lcMonitor).noquote() << text;
}

} // namespace

AlertDelivery::AlertDelivery(EventLog &eventLog, smtp_sender &sender)
    : m_eventLog(eventLog)
    , m_sender(sender)
{}

void AlertDelivery::deliver(const HealthReport &report, const Settings &settings)
{
    if (report.alertLevel < level::kWarning)
        return;
    if (settings.logSysEvLog)
        reportEvent(report);
    if (settings.emailNotify)
        sendMail(report, settings);
}

bool AlertDelivery::startTestMail(const MailTest &test)
{
    if (m_sender.isBusy())
        return false;
    m_sender.start(testMail(test));
    return true;
}

void AlertDelivery::mailEnded(const MailRun &run)
{
    if (run.outcome != MailRun::Outcome::Sent) {
        noteMailFailure(failureReason(run));
        return;
    }
    m_mailOutcome.lastSuccess = QDateTime::currentDateTimeUtc();
    m_mailOutcome.reason.clear();
    logChange(m_mail.succeeded());
}

void AlertDelivery::noteMailFailure(const QString &reason)
{
    const QDateTime now = QDateTime::currentDateTime();
    m_mailOutcome.lastFailure = now.toUTC();
    m_mailOutcome.reason = reason;
    logChange(m_mail.failed(reason, now));
}

void AlertDelivery::reportEvent(const HealthReport &report)
{
    const bool isCritical = report.alertLevel == level::kCritical;
    Event event;
    event.source = QStringLiteral("Halvex");
    event.type = isCritical ? EventType::Error : EventType::Warning;
    event.id = isCritical ? 3 : 2;
    event.text = report.alertText;
    m_eventLog.report(event);
    m_eventOutcome.lastSuccess = QDateTime::currentDateTimeUtc();
}

void AlertDelivery::sendMail(const HealthReport &report, const Settings &settings)
{
    if (m_sender.isBusy())
        noteMailFailure(QStringLiteral("dropped because the sender is busy, ") + m_sender.activity());
    else
        m_sender.start(alertMail(alertWord(report.alertLevel), report.alertText, settings,
                                 QHostInfo::localHostName(), QDateTime::currentDateTime()));
}
