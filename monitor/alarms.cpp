// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alarms.h"

#include "monitor/alert_delivery.h"
#include "monitor/alert_state.h"
#include "monitor/alert_text.h"
#include "monitor/findings.h"
#include "monitor/json_fields.h"
#include "monitor/mail_transport.h"
#include "monitor/program_transport.h"
#include "monitor/webhook_transport.h"
#include "platform/directory_path.h"
#include "platform/event_log.h"

#include <QDir>
#include <QHostInfo>

#include <utility>

namespace {

using MessageEvent = AlertMessage::Event;

/// Returns an empty path if no option needs a file, or if the folder is another system's.
QString alertsFilePath(const QString &folder, const ServiceOptions &options)
{
    const bool isNeeded = options.alertPolicy == AlertPolicy::Changes || !options.alertWebhook.isEmpty() ||
                          !options.alertProgram.isEmpty();
    const QString path = pathIn(folder, QStringLiteral("alerts.json"));
    return isNeeded && QDir::isAbsolutePath(path) ? path : QString();
}

SmtpTimeouts mailTimeouts(const ServiceOptions &options)
{
    SmtpTimeouts timeouts;
    timeouts.reply = options.smtpReplyTimeout;
    // Under the other policy this sender sends tests only, and a test must end.
    if (options.alertPolicy == AlertPolicy::Every && timeouts.reply.count() == 0)
        timeouts.reply = std::chrono::seconds(60);
    return timeouts;
}

/// Returns the listed drives with the findings of this evaluation alone, which have no start.
AlertState stateOf(const Evaluation &evaluation, const AlertRules &rules)
{
    AlertState state;
    for (int i = 0; i < evaluation.drives.size(); ++i) {
        const DriveEvaluation &listed = evaluation.drives.at(i);
        DriveAlerts drive;
        drive.model = listed.model;
        drive.serial = listed.serial;
        drive.index = i;
        drive.deviceNumber = listed.deviceNumber;
        updateFindings(drive, listed, rules, {});
        state.drives << drive;
    }
    return state;
}

/// Returns the alert of one evaluation, and removes its findings from `state`: nothing remembers them.
AlertMessage takeAlert(AlertState &state, Severity level)
{
    AlertMessage message;
    message.level = level;
    for (DriveAlerts &drive : state.drives) {
        if (drive.level && *drive.level > Severity::Fine)
            message.drives << drive;
        drive.findings.clear();
    }
    return message;
}

QString channelKey()
{
    return QStringLiteral("channels");
}

} // namespace

Alarms::Alarms(const Settings &settings, const ServiceOptions &options, EventLog &eventLog,
               AlertDelivery &every, const QString &folder, AlertChannel::Clock clock)
    : m_settings(settings)
    , m_options(options)
    , m_eventLog(eventLog)
    , m_every(every)
    , m_clock(std::move(clock))
    , m_file(alertsFilePath(folder, options))
{
    const auto makeChannel = [this](const char *name, std::unique_ptr<Transport> transport) {
        auto channel =
            std::make_unique<AlertChannel>(QString::fromLatin1(name), std::move(transport), m_clock);
        connect(channel.get(), &AlertChannel::changed, this, &Alarms::save);
        return channel;
    };
    const SmtpTls tls{options.smtpSecurity, options.smtpAuthorities};
    m_mail = makeChannel("mail", std::make_unique<MailTransport>(settings, tls, mailTimeouts(options)));
    if (!options.alertWebhook.isEmpty())
        m_webhook = makeChannel("webhook", std::make_unique<WebhookTransport>(options.alertWebhook));
    if (!options.alertProgram.isEmpty())
        m_program = makeChannel("program", std::make_unique<ProgramTransport>(options.alertProgram));
    restore(m_file.load());
    switchChannels();
    for (AlertChannel *channel : channels())
        channel->resume();
}

void Alarms::switchChannels()
{
    m_mail->setOn(m_settings.emailNotify);
    if (m_webhook)
        m_webhook->setOn(true);
    if (m_program)
        m_program->setOn(true);
}

void Alarms::evaluated(const HealthReport &report, const DeviceList &devices, bool isPoll,
                       bool isListComplete)
{
    switchChannels();
    const QDateTime now = m_clock();
    const Evaluation evaluation = evaluationOf(devices, isPoll, isListComplete);
    const AlertRules rules{m_settings.wTemp, m_settings.cTemp, m_options.alertGrowth};
    if (decidesByChanges())
        applyPolicy(evaluation, rules, now);
    else
        deliverEvery(report, evaluation, rules, now);
    save();
    for (AlertChannel *channel : channels())
        channel->resume();
}

void Alarms::applyPolicy(const Evaluation &evaluation, const AlertRules &rules, const QDateTime &now)
{
    const bool hasChannel = m_settings.logSysEvLog || m_settings.emailNotify || m_webhook || m_program;
    const DeliveryRules delivery{hasChannel, m_options.alertReminder};
    AlertDecision decision = decideAlerts(std::move(m_state), evaluation, rules, delivery, now);
    m_state = std::move(decision.next);
    for (const AlertMessage &message : qAsConst(decision.messages)) {
        const QString text = messageText(message);
        if (m_settings.logSysEvLog)
            reportEvent(message.event, message.level, text);
        for (AlertChannel *channel : channels())
            queue(*channel, message, text, now);
    }
}

/// The event log and mail have no memory under this policy; webhook and program get each delivery.
void Alarms::deliverEvery(const HealthReport &report, const Evaluation &evaluation, const AlertRules &rules,
                          const QDateTime &now)
{
    m_every.deliver(report, m_settings);
    m_listed = stateOf(evaluation, rules);
    const AlertMessage alert = takeAlert(m_listed, Severity(report.alertLevel));
    if (alert.level < Severity::Warning)
        return;
    for (AlertChannel *channel : channels()) {
        if (channel != m_mail.get())
            queue(*channel, alert, report.alertText, now);
    }
}

void Alarms::queue(AlertChannel &channel, const AlertMessage &message, const QString &text,
                   const QDateTime &now)
{
    if (channel.isOn())
        channel.add(entryOf(channel, message, text, now));
}

OutboxEntry Alarms::entryOf(const AlertChannel &channel, const AlertMessage &message, const QString &text,
                            const QDateTime &now) const
{
    OutboxEntry entry;
    entry.event = message.event;
    entry.level = message.level;
    entry.text = text;
    entry.time = now;
    if (&channel != m_mail.get())
        entry.document = messageDocument(message, text, QHostInfo::localHostName(), now);
    return entry;
}

void Alarms::reportEvent(MessageEvent event, Severity level, const QString &text)
{
    ::Event entry;
    entry.source = QStringLiteral("Halvex");
    const bool isAlert = event == MessageEvent::Alert || event == MessageEvent::Reminder;
    const bool isCritical = level == Severity::Critical;
    entry.type = !isAlert ? EventType::Information : isCritical ? EventType::Error : EventType::Warning;
    entry.id = !isAlert ? 1 : isCritical ? 3 : 2;
    entry.text = text;
    m_eventLog.report(entry);
    m_events.lastSuccess = m_clock();
}

QVector<AlertChannel *> Alarms::channels() const
{
    QVector<AlertChannel *> channels;
    for (AlertChannel *channel : {m_mail.get(), m_webhook.get(), m_program.get()}) {
        if (channel)
            channels << channel;
    }
    return channels;
}

QJsonObject Alarms::document() const
{
    if (decidesByChanges())
        return alertsDocument(QStringLiteral("changes"), worstOpenSeverity(m_state), m_state,
                              channelStatuses());
    std::optional<Severity> level;
    if (m_settings.alertLevel != level::kNotEvaluated)
        level = Severity(m_settings.alertLevel);
    return alertsDocument(QStringLiteral("every"), level, m_listed, channelStatuses());
}

QVector<ChannelStatus> Alarms::channelStatuses() const
{
    const auto status = [](const char *name, const AlertChannel *channel) {
        const QString text = QString::fromLatin1(name);
        return channel ? ChannelStatus{text, channel->isOn(), channel->outcome(), channel->pending()}
                       : ChannelStatus{text, false, {}, 0};
    };
    QVector<ChannelStatus> statuses{{QStringLiteral("events"), m_settings.logSysEvLog, m_events, 0},
                                    status("mail", m_mail.get()),
                                    status("webhook", m_webhook.get()),
                                    status("program", m_program.get())};
    statuses[1].isOn = m_settings.emailNotify;
    if (!decidesByChanges()) {
        statuses[0].outcome = m_every.eventOutcome();
        statuses[1].outcome = m_every.mailOutcome();
    }
    return statuses;
}

Result<int> Alarms::acknowledge(const FindingName &name)
{
    Result<int> count = acknowledgeFindings(decidesByChanges() ? m_state : m_listed, name);
    save();
    return count;
}

Result<void> Alarms::forget(const QString &name)
{
    Result<void> result = forgetDrive(decidesByChanges() ? m_state : m_listed, name);
    save();
    return result;
}

void Alarms::restore(const QJsonObject &json)
{
    m_state = parseAlertState(json);
    m_events.lastSuccess = json_fields::time(json, "lastEvent");
    const QJsonObject channelDocuments = json.value(channelKey()).toObject();
    for (AlertChannel *channel : channels())
        channel->restore(channelDocuments.value(channel->name()).toObject());
}

void Alarms::save()
{
    QJsonObject channelDocuments;
    for (const AlertChannel *channel : channels())
        channelDocuments.insert(channel->name(), channel->toJson());
    QJsonObject json = alertStateDocument(m_state);
    json.insert(QStringLiteral("lastEvent"), timeValue(m_events.lastSuccess));
    json.insert(channelKey(), channelDocuments);
    m_file.save(json);
}

void Alarms::test(const TestReply &reply)
{
    if (m_testReply) {
        reply(Error{QStringLiteral("a test is in progress")});
        return;
    }
    m_testReply = reply;
    m_testOutcomes = {};
    m_testsLeft = 1; // this function, so that the end is reached once, also without a channel
    switchChannels();
    AlertMessage message;
    message.event = MessageEvent::Test;
    const QString text = messageText(message);
    if (m_settings.logSysEvLog) {
        ++m_testsLeft;
        reportEvent(MessageEvent::Test, Severity::Fine, text);
        finishTest(QStringLiteral("events"), {});
    }
    for (AlertChannel *channel : channels()) {
        if (!channel->isOn())
            continue;
        ++m_testsLeft;
        channel->test(
            entryOf(*channel, message, text, m_clock()),
            [this, name = channel->name()](const Result<void> &result) { finishTest(name, result); });
    }
    finishTest({}, {});
}

void Alarms::finishTest(const QString &channel, const Result<void> &result)
{
    if (!channel.isEmpty()) {
        const QJsonValue reason = result ? QJsonValue() : QJsonValue(result.failure().text);
        m_testOutcomes << QJsonObject{{QStringLiteral("name"), channel},
                                      {QStringLiteral("ok"), bool(result)},
                                      {QStringLiteral("reason"), reason}};
    }
    if (--m_testsLeft > 0)
        return;
    const TestReply reply = std::exchange(m_testReply, nullptr);
    reply(m_testOutcomes);
}
