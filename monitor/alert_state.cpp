// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_state.h"

#include "monitor/alert_text.h"
#include "monitor/json_fields.h"

#include <QJsonArray>

#include <algorithm>

namespace {

using json_fields::rawValue;
using json_fields::time;

QJsonObject acknowledgementDocument(const Finding::Acknowledgement &acknowledged)
{
    return {{QStringLiteral("severity"), severityWord(acknowledged.severity)},
            {QStringLiteral("value"), acknowledged.value},
            {QStringLiteral("raw"), qint64(acknowledged.raw)}};
}

QJsonObject storedFinding(const Finding &finding)
{
    QJsonObject json{{QStringLiteral("kind"), kindWord(finding.kind)},
                     {QStringLiteral("id"), qint64(finding.id)},
                     {QStringLiteral("severity"), severityWord(finding.severity)},
                     {QStringLiteral("since"), timeValue(finding.since)},
                     {QStringLiteral("value"), finding.value},
                     {QStringLiteral("threshold"), qint64(finding.threshold)},
                     {QStringLiteral("raw"), qint64(finding.raw)},
                     {QStringLiteral("baseline"), qint64(finding.baseline)},
                     {QStringLiteral("limit"), finding.limit},
                     {QStringLiteral("evaluationsAbsent"), finding.evaluationsAbsent},
                     {QStringLiteral("evaluationsBelowCritical"), finding.evaluationsBelowCritical},
                     {QStringLiteral("lastGrowth"), timeValue(finding.lastGrowth)},
                     {QStringLiteral("delivered"), severityWord(finding.delivered)}};
    if (finding.acknowledged)
        json.insert(QStringLiteral("acknowledged"), acknowledgementDocument(*finding.acknowledged));
    return json;
}

QJsonObject storedDrive(const DriveAlerts &drive)
{
    QJsonArray findings;
    for (const Finding &finding : drive.findings)
        findings << storedFinding(finding);
    QJsonObject baselines;
    for (auto it = drive.baselines.cbegin(); it != drive.baselines.cend(); ++it)
        baselines.insert(QString::number(it.key()), qint64(it.value()));
    return {
        {QStringLiteral("model"), drive.model},         {QStringLiteral("serial"), drive.serial},
        {QStringLiteral("index"), drive.index},         {QStringLiteral("deviceNumber"), drive.deviceNumber},
        {QStringLiteral("known"), drive.isKnown},       {QStringLiteral("failedPolls"), drive.failedPolls},
        {QStringLiteral("reported"), drive.isReported}, {QStringLiteral("baselines"), baselines},
        {QStringLiteral("findings"), findings}};
}

QString text(const QJsonObject &json, const char *name)
{
    return json.value(QLatin1String(name)).toString();
}

/// Reads a number of evaluations or polls, to which more are going to be added.
int count(const QJsonObject &json, const char *name)
{
    constexpr int kHighest = 1000000;
    return std::clamp(json.value(QLatin1String(name)).toInt(), 0, kHighest);
}

std::optional<Finding> parseFinding(const QJsonObject &json)
{
    const auto kind = parseKind(text(json, "kind"));
    const auto severity = parseSeverity(text(json, "severity"));
    if (!kind || !severity)
        return std::nullopt;
    const auto number = [&json](const char *name) { return json.value(QLatin1String(name)); };
    Finding finding;
    finding.kind = *kind;
    finding.severity = *severity;
    finding.id = quint32(rawValue(number("id")));
    finding.since = time(json, "since");
    finding.value = number("value").toInt();
    finding.threshold = quint32(rawValue(number("threshold")));
    finding.raw = rawValue(number("raw"));
    finding.baseline = rawValue(number("baseline"));
    finding.limit = number("limit").toInt();
    finding.evaluationsAbsent = count(json, "evaluationsAbsent");
    finding.evaluationsBelowCritical = count(json, "evaluationsBelowCritical");
    finding.lastGrowth = time(json, "lastGrowth");
    finding.delivered = parseSeverity(text(json, "delivered")).value_or(Severity::Fine);
    const QJsonObject acknowledged = number("acknowledged").toObject();
    if (const auto worst = parseSeverity(text(acknowledged, "severity")))
        finding.acknowledged =
            Finding::Acknowledgement{*worst, acknowledged.value(QLatin1String("value")).toInt(),
                                     rawValue(acknowledged.value(QLatin1String("raw")))};
    return finding;
}

DriveAlerts parseDrive(const QJsonObject &json)
{
    DriveAlerts drive;
    drive.model = text(json, "model");
    drive.serial = text(json, "serial");
    drive.index = json.value(QLatin1String("index")).toInt(-1);
    drive.deviceNumber = json.value(QLatin1String("deviceNumber")).toInt(-1);
    drive.isKnown = json.value(QLatin1String("known")).toBool();
    drive.failedPolls = count(json, "failedPolls");
    drive.isReported = json.value(QLatin1String("reported")).toBool();
    const QJsonObject baselines = json.value(QLatin1String("baselines")).toObject();
    for (auto it = baselines.begin(); it != baselines.end(); ++it)
        drive.baselines.insert(it.key().toUInt(), rawValue(it.value()));
    for (const QJsonValue &value : json.value(QLatin1String("findings")).toArray()) {
        if (const auto finding = parseFinding(value.toObject()))
            drive.findings << *finding;
    }
    return drive;
}

} // namespace

QJsonObject alertStateDocument(const AlertState &state)
{
    QJsonArray drives;
    for (const DriveAlerts &drive : state.drives) {
        // A drive that was never read has nothing worth remembering.
        if (drive.isKnown)
            drives << storedDrive(drive);
    }
    return {{QStringLiteral("lastDelivery"), timeValue(state.lastDelivery)},
            {QStringLiteral("drives"), drives}};
}

AlertState parseAlertState(const QJsonObject &json)
{
    AlertState state;
    state.lastDelivery = time(json, "lastDelivery");
    for (const QJsonValue &value : json.value(QLatin1String("drives")).toArray())
        state.drives << parseDrive(value.toObject());
    return state;
}
