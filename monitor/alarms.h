// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/service_options.h"
#include "config/settings.h"
#include "monitor/alert_channel.h"
#include "monitor/alert_commands.h"
#include "monitor/alerts_file.h"
#include "monitor/health.h"

class AlertDelivery;
class EventLog;

/// The alarms of the service: applies the alert policy to each evaluation, delivers through the channels and
/// keeps the state in alerts.json, unless no option asks for any of it. Event loop's thread only.
class Alarms : public QObject
{
    Q_OBJECT

public:
    using TestReply = std::function<void(const Result<QJsonArray> &)>;

    /// Borrows everything. `every` delivers under that policy. `folder` is that of alerts.json.
    Alarms(const Settings &settings, const ServiceOptions &options, EventLog &eventLog, AlertDelivery &every,
           const QString &folder, AlertChannel::Clock clock = &QDateTime::currentDateTimeUtc);

    /// Takes the result of an evaluation. `isPoll` is false if it follows a change of settings. The list of
    /// drives is not complete while a detection runs.
    void evaluated(const HealthReport &report, const DeviceList &devices, bool isPoll, bool isListComplete);

    [[nodiscard]] QJsonObject document() const;
    Result<int> acknowledge(const FindingName &name);
    Result<void> forget(const QString &name);
    /// Sends a test through every channel that is on; `reply` is called later with their outcomes.
    void test(const TestReply &reply);

private:
    [[nodiscard]] bool decidesByChanges() const { return m_options.alertPolicy == AlertPolicy::Changes; }
    void switchChannels();
    void applyPolicy(const Evaluation &evaluation, const AlertRules &rules, const QDateTime &now);
    void deliverEvery(const HealthReport &report, const Evaluation &evaluation, const AlertRules &rules,
                      const QDateTime &now);
    void queue(AlertChannel &channel, const AlertMessage &message, const QString &text, const QDateTime &now);
    [[nodiscard]] OutboxEntry entryOf(const AlertChannel &channel, const AlertMessage &message,
                                      const QString &text, const QDateTime &now) const;
    void reportEvent(AlertMessage::Event event, Severity level, const QString &text);
    void finishTest(const QString &channel, const Result<void> &result);
    [[nodiscard]] QVector<AlertChannel *> channels() const;
    [[nodiscard]] QVector<ChannelStatus> channelStatuses() const;
    void restore(const QJsonObject &json);
    void save();

    const Settings &m_settings;
    const ServiceOptions &m_options;
    EventLog &m_eventLog;
    AlertDelivery &m_every;
    const AlertChannel::Clock m_clock;
    AlertsFile m_file;
    AlertState m_state;  ///< of the policy `changes`; kept, but not used, under the other one
    AlertState m_listed; ///< the listed drives, under the policy `every`
    ChannelOutcome m_events;
    std::unique_ptr<AlertChannel> m_mail;
    std::unique_ptr<AlertChannel> m_webhook; ///< null without a URL
    std::unique_ptr<AlertChannel> m_program; ///< null without a program
    TestReply m_testReply;                   ///< set while a test is in progress
    QJsonArray m_testOutcomes;               ///< so far
    int m_testsLeft = 0;
};
