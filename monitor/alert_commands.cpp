// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_commands.h"

#include "monitor/alert_text.h"
#include "monitor/findings.h"

#include <algorithm>

namespace {

QJsonObject statusDocument(const ChannelStatus &channel)
{
    const QString &reason = channel.outcome.reason;
    return {{QStringLiteral("name"), channel.name},
            {QStringLiteral("on"), channel.isOn},
            {QStringLiteral("lastSuccess"), timeValue(channel.outcome.lastSuccess)},
            {QStringLiteral("lastFailure"), timeValue(channel.outcome.lastFailure)},
            {QStringLiteral("reason"), reason.isEmpty() ? QJsonValue() : QJsonValue(reason)},
            {QStringLiteral("pending"), channel.pending}};
}

QJsonObject listedFinding(const DriveAlerts &drive, const Finding &finding)
{
    QJsonObject json = findingDocument(finding);
    json.insert(QStringLiteral("model"), drive.model);
    json.insert(QStringLiteral("serial"), drive.serial);
    json.insert(QStringLiteral("number"), drive.isListed ? QJsonValue(drive.index) : QJsonValue());
    json.insert(QStringLiteral("acknowledged"), finding.acknowledged.has_value());
    return json;
}

Error unknownDrive()
{
    return Error{QStringLiteral("no drive has this serial number")};
}

} // namespace

Result<int> acknowledgeFindings(AlertState &state, const FindingName &name)
{
    const std::optional<FindingKind> wantedKind = parseKind(name.kind);
    if (!name.kind.isEmpty() && !wantedKind)
        return Error{QStringLiteral("the kind is temperature, attribute, growth or unreadable")};
    bool isNumber = true;
    const quint32 wantedId = name.id.isEmpty() ? 0 : name.id.toUInt(&isNumber);
    if (!isNumber)
        return Error{QStringLiteral("the attribute ID is not a number")};

    bool isKnownDrive = false;
    int count = 0;
    for (DriveAlerts &drive : state.drives) {
        if (!isNamed(drive, name.drive))
            continue;
        isKnownDrive = true;
        for (Finding &finding : drive.findings) {
            if ((wantedKind && finding.kind != *wantedKind) || (!name.id.isEmpty() && finding.id != wantedId))
                continue;
            acknowledge(drive, finding);
            ++count;
        }
    }
    if (!isKnownDrive)
        return unknownDrive();
    return count;
}

Result<void> forgetDrive(AlertState &state, const QString &name)
{
    const auto isGone = [&name](const DriveAlerts &drive) { return isNamed(drive, name) && !drive.isListed; };
    auto &drives = state.drives;
    const int before = drives.size();
    drives.erase(std::remove_if(drives.begin(), drives.end(), isGone), drives.end());
    if (drives.size() < before)
        return {};
    const bool isListed = std::any_of(drives.cbegin(), drives.cend(),
                                      [&name](const DriveAlerts &drive) { return isNamed(drive, name); });
    return isListed ? Error{QStringLiteral("the drive is listed")} : unknownDrive();
}

QJsonObject alertsDocument(const QString &policy, const std::optional<Severity> &level,
                           const AlertState &state, const QVector<ChannelStatus> &channels)
{
    QJsonArray findings;
    for (const DriveAlerts &drive : state.drives) {
        for (const Finding &finding : drive.findings)
            findings << listedFinding(drive, finding);
    }
    QJsonArray statuses;
    for (const ChannelStatus &channel : channels)
        statuses << statusDocument(channel);
    return {{QStringLiteral("policy"), policy},
            {QStringLiteral("level"), level ? QJsonValue(severityWord(*level)) : QJsonValue()},
            {QStringLiteral("findings"), findings},
            {QStringLiteral("channels"), statuses}};
}

Severity worstOpenSeverity(const AlertState &state)
{
    Severity worst = Severity::Fine;
    for (const DriveAlerts &drive : state.drives) {
        for (const Finding &finding : drive.findings) {
            if (!finding.acknowledged)
                worst = std::max(worst, finding.severity);
        }
    }
    return worst;
}
