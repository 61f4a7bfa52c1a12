// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_state.h"

#include "fuzz/fuzz_input.h"
#include "monitor/alert_commands.h"
#include "monitor/alert_text.h"
#include "monitor/findings.h"
#include "monitor/outbox.h"

#include <QJsonDocument>

#include <algorithm>

namespace {

const QDateTime kNow(QDate(2026, 11, 15), QTime(12, 0), Qt::UTC);

/// Returns one drive that is hot, fails and grows.
Evaluation evaluation(ReadOutcome read)
{
    DriveEvaluation drive;
    drive.model = QStringLiteral("M");
    drive.serial = QStringLiteral("S");
    drive.read = read;
    drive.isEvaluated = true;
    drive.temperatureCelsius = 70;
    drive.attributes.resize(1);
    drive.attributes[0].id = 5;
    drive.attributes[0].current = 4;
    drive.attributes[0].raw = 9;
    Evaluation result;
    result.drives << drive;
    return result;
}

void checkOutbox(const QJsonObject &json)
{
    Outbox outbox = Outbox::fromJson(json);
    require(outbox.size() <= Outbox::kMaxEntries);
    require(Outbox::fromJson(outbox.toJson()).toJson() == outbox.toJson());
    require(outbox.waitingTime(kNow).count() >= 0 && outbox.waitingTime(kNow) <= std::chrono::minutes(15));
    if (!outbox.isEmpty())
        outbox.failed(outbox.first().id, kNow);
    (void)outbox.dropExpired(kNow);
    (void)outbox.dropExpired(kNow.addDays(1));
    require(outbox.isEmpty());
}

/// Checks that a state is read back as it was stored, and that an acknowledged drive causes no alert.
void checkState(const QJsonObject &json)
{
    const AlertState state = parseAlertState(json);
    const QJsonObject stored = alertStateDocument(state);
    require(alertStateDocument(parseAlertState(stored)) == stored);
    const AlertRules rules{55, 65, {5}};
    (void)decideAlerts(state, evaluation(ReadOutcome::Failed), rules, {}, kNow);
    AlertDecision decision = decideAlerts(state, evaluation(ReadOutcome::Succeeded), rules, {}, kNow);
    require(decision.next.lastDelivery <= kNow);
    for (const AlertMessage &message : qAsConst(decision.messages)) {
        const QString text = messageText(message);
        (void)messageDocument(message, text, QStringLiteral("host"), kNow);
    }
    require(bool(acknowledgeFindings(decision.next, {QStringLiteral("S"), {}, {}})));
    decision = decideAlerts(decision.next, evaluation(ReadOutcome::Succeeded), rules, {}, kNow);
    const auto isAboutThis = [](const AlertMessage &message) {
        return message.event == AlertMessage::Event::Alert &&
               std::any_of(message.drives.begin(), message.drives.end(), [](const DriveAlerts &drive) {
                   return drive.serial == QLatin1String("S") && drive.isListed;
               });
    };
    require(std::none_of(decision.messages.begin(), decision.messages.end(), isAboutThis));
}

} // namespace

/// Input: the file with the alarms. Whatever it holds, the next evaluation follows its rules.
void fuzz(const QByteArray &bytes)
{
    const QJsonObject json = QJsonDocument::fromJson(bytes).object();
    checkState(json);
    for (const QJsonValue &channel : json.value(QStringLiteral("channels")).toObject())
        checkOutbox(channel.toObject());
    checkOutbox(json);
}
