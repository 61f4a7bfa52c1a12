// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/settings.h"
#include "monitor/channel_outcome.h"
#include "monitor/fault_state.h"
#include "monitor/health.h"

#include <QString>

class EventLog;
class smtp_sender;
struct MailRun;
struct MailTest;

/// Delivers alerts to the event log and by mail, and logs at warning when mail starts to fail, fails for
/// another reason, and works again. Event loop's thread only.
class AlertDelivery
{
public:
    /// Borrows both, which must outlive it.
    AlertDelivery(EventLog &eventLog, smtp_sender &sender);

    /// Reports a warning or a critical state through the channels that `settings` switch on, the event log
    /// first. The mail is dropped while the sender is busy; the next evaluation sends another one.
    void deliver(const HealthReport &report, const Settings &settings);

    /// Starts a test mail; false if the sender is busy.
    [[nodiscard]] bool startTestMail(const MailTest &test);

    /// Takes the result of an alert mail, but not of a test mail.
    void mailEnded(const MailRun &run);

    [[nodiscard]] const ChannelOutcome &eventOutcome() const { return m_eventOutcome; }
    [[nodiscard]] const ChannelOutcome &mailOutcome() const { return m_mailOutcome; }

private:
    void reportEvent(const HealthReport &report);
    void sendMail(const HealthReport &report, const Settings &settings);
    void noteMailFailure(const QString &reason);

    EventLog &m_eventLog;
    smtp_sender &m_sender;
    ChannelOutcome m_eventOutcome;
    ChannelOutcome m_mailOutcome;
    FaultState m_mail{QStringLiteral("Alert mail")};
};
