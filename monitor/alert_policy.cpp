// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_policy.h"

#include "monitor/findings.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace {

using Event = AlertMessage::Event;

bool isSameDrive(const DriveAlerts &drive, const DriveEvaluation &listed)
{
    return drive.model == listed.model && drive.serial == listed.serial;
}

/// Removes the remembered drive of a listed one from `remembered`. If several drives have the same identity,
/// the index decides.
std::optional<DriveAlerts> take(QVector<DriveAlerts> &remembered, const DriveEvaluation &listed, int index,
                                bool mustHaveIndex)
{
    const auto matches = [&](const DriveAlerts &drive) {
        return isSameDrive(drive, listed) && (!mustHaveIndex || drive.index == index);
    };
    const auto found = std::find_if(remembered.begin(), remembered.end(), matches);
    if (found == remembered.end())
        return std::nullopt;
    DriveAlerts drive = std::move(*found);
    remembered.erase(found);
    return drive;
}

/// Returns the listed drives in list order, with what is remembered of them, and leaves the others in
/// `remembered`. Equal indexes are matched first, then what is left of each identity in order.
QVector<DriveAlerts> matchDrives(QVector<DriveAlerts> &remembered, const QVector<DriveEvaluation> &listed)
{
    QVector<DriveAlerts> drives(listed.size());
    QVector<bool> isMatched(listed.size(), false);
    for (const bool mustHaveIndex : {true, false}) {
        for (int i = 0; i < listed.size(); ++i) {
            if (isMatched.at(i))
                continue;
            if (auto drive = take(remembered, listed.at(i), i, mustHaveIndex)) {
                drives[i] = *std::move(drive);
                isMatched[i] = true;
            }
        }
    }
    for (int i = 0; i < listed.size(); ++i) {
        drives[i].model = listed.at(i).model;
        drives[i].serial = listed.at(i).serial;
        drives[i].index = i;
        drives[i].deviceNumber = listed.at(i).deviceNumber;
        drives[i].isListed = true;
    }
    return drives;
}

void limitTimes(AlertState &state, const QDateTime &now)
{
    const auto limit = [&now](QDateTime &time) {
        if (time > now)
            time = now;
    };
    limit(state.lastDelivery);
    for (DriveAlerts &drive : state.drives) {
        for (Finding &finding : drive.findings) {
            limit(finding.since);
            limit(finding.lastGrowth);
        }
    }
}

bool isOpen(const Finding &finding)
{
    return !finding.acknowledged;
}

/// Returns a message with all findings that are not acknowledged.
AlertMessage openFindings(Event event, const QVector<DriveAlerts> &drives)
{
    AlertMessage message;
    message.event = event;
    for (DriveAlerts drive : drives) {
        auto &findings = drive.findings;
        findings.erase(std::remove_if(findings.begin(), findings.end(), std::not_fn(isOpen)), findings.end());
        for (const Finding &finding : qAsConst(findings))
            message.level = std::max(message.level, finding.severity);
        if (!findings.isEmpty())
            message.drives << drive;
    }
    return message;
}

bool hasNews(const AlertMessage &message)
{
    for (const DriveAlerts &drive : message.drives) {
        for (const Finding &finding : drive.findings) {
            if (finding.severity > finding.delivered)
                return true;
        }
    }
    return false;
}

void markDelivered(QVector<DriveAlerts> &drives)
{
    for (DriveAlerts &drive : drives) {
        for (Finding &finding : drive.findings) {
            if (!isOpen(finding))
                continue;
            finding.delivered = finding.severity;
            drive.isReported = true;
        }
    }
}

/// Returns a message about the drives whose reported findings have all ended.
AlertMessage takeRecovered(QVector<DriveAlerts> &drives)
{
    AlertMessage message;
    message.event = Event::Recovery;
    for (DriveAlerts &drive : drives) {
        if (!drive.isReported || !drive.findings.isEmpty())
            continue;
        drive.isReported = false;
        message.drives << drive;
    }
    return message;
}

QVector<AlertMessage> messagesOf(AlertState &state, const DeliveryRules &delivery, const QDateTime &now)
{
    const AlertMessage recovery = takeRecovered(state.drives);
    if (!delivery.hasChannel)
        return {};
    QVector<AlertMessage> messages;
    const AlertMessage alert = openFindings(Event::Alert, state.drives);
    if (hasNews(alert))
        messages << alert;
    if (!recovery.drives.isEmpty())
        messages << recovery;
    const auto sinceLast = std::chrono::seconds(state.lastDelivery.secsTo(now));
    const bool isDue = delivery.reminder.count() > 0 && sinceLast >= delivery.reminder;
    if (messages.isEmpty() && isDue && !alert.drives.isEmpty())
        messages << openFindings(Event::Reminder, state.drives);
    if (!messages.isEmpty()) {
        state.lastDelivery = now;
        if (messages.first().event != Event::Recovery)
            markDelivered(state.drives);
    }
    return messages;
}

} // namespace

AlertDecision decideAlerts(AlertState state, const Evaluation &evaluation, const AlertRules &rules,
                           const DeliveryRules &delivery, const QDateTime &now)
{
    limitTimes(state, now);
    AlertDecision decision;
    decision.next.lastDelivery = state.lastDelivery;
    QVector<DriveAlerts> &drives = decision.next.drives;
    drives = matchDrives(state.drives, evaluation.drives);
    for (int i = 0; i < drives.size(); ++i)
        updateFindings(drives[i], evaluation.drives.at(i), rules, now);
    for (DriveAlerts drive : qAsConst(state.drives)) {
        if (!drive.isKnown)
            continue;
        if (evaluation.isListComplete)
            updateMissingDrive(drive, now);
        drives << drive;
    }
    decision.messages = messagesOf(decision.next, delivery, now);
    return decision;
}

bool isNamed(const DriveAlerts &drive, const QString &name)
{
    return name == drive.serial || name == drive.model + QLatin1Char('/') + drive.serial;
}
