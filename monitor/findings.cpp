// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/findings.h"

#include "monitor/health.h"

#include <algorithm>

namespace {

constexpr qint64 kHysteresisCelsius = 3;
constexpr qint64 kWorseCelsius = 5;
constexpr int kCalmEvaluations = 3;
constexpr int kFailedPolls = 3;
constexpr qint64 kCalmSeconds = 7 * 24 * 3600;

Finding &start(DriveAlerts &drive, FindingKind kind, quint32 id, Severity severity, const QDateTime &now)
{
    Finding finding;
    finding.kind = kind;
    finding.id = id;
    finding.severity = severity;
    finding.since = now;
    drive.findings << finding;
    return drive.findings.last();
}

Finding &findOrStart(DriveAlerts &drive, FindingKind kind, quint32 id, Severity severity,
                     const QDateTime &now)
{
    Finding *const finding = drive.find(kind, id);
    return finding ? *finding : start(drive, kind, id, severity, now);
}

/// A finding that falls back and becomes critical again is reported again, acknowledged or not.
void setSeverity(Finding &finding, Severity severity)
{
    finding.severity = severity;
    finding.delivered = std::min(finding.delivered, severity);
    if (finding.acknowledged)
        finding.acknowledged->severity = std::min(finding.acknowledged->severity, severity);
}

/// Rates a temperature; a level once reached is kept until the temperature is clearly below its limit.
Severity temperatureSeverity(qint32 celsius, Severity previous, const AlertRules &rules)
{
    const auto holds = [celsius](qint64 limit, bool wasReached) {
        return celsius >= limit || (wasReached && celsius > limit - kHysteresisCelsius);
    };
    if (holds(rules.criticalCelsius, previous == Severity::Critical))
        return Severity::Critical;
    return holds(rules.warningCelsius, previous != Severity::Fine) ? Severity::Warning : Severity::Fine;
}

void updateTemperature(DriveAlerts &drive, const DriveEvaluation &evaluation, const AlertRules &rules,
                       const QDateTime &now)
{
    const Finding *const present = drive.find(FindingKind::Temperature);
    const Severity previous = present ? present->severity : Severity::Fine;
    const Severity severity = evaluation.temperatureCelsius
                                  ? temperatureSeverity(*evaluation.temperatureCelsius, previous, rules)
                                  : Severity::Fine;
    if (severity == Severity::Fine) {
        drive.remove(FindingKind::Temperature);
        return;
    }
    Finding &finding = findOrStart(drive, FindingKind::Temperature, 0, severity, now);
    setSeverity(finding, severity);
    finding.value = *evaluation.temperatureCelsius;
    finding.limit = severity == Severity::Critical ? rules.criticalCelsius : rules.warningCelsius;
}

void storeValues(Finding &finding, const AttributeEntry &attribute)
{
    finding.value = attribute.current;
    finding.threshold = attribute.threshold;
    finding.raw = attribute.raw;
}

/// Counts evaluations below the finding's severity; returns false when the finding has ended.
bool isStillPresent(Finding &finding, Severity seen)
{
    finding.evaluationsAbsent = seen == Severity::Fine ? finding.evaluationsAbsent + 1 : 0;
    finding.evaluationsBelowCritical = seen == Severity::Critical ? 0 : finding.evaluationsBelowCritical + 1;
    if (seen > finding.severity)
        setSeverity(finding, seen);
    else if (finding.severity == Severity::Critical && finding.evaluationsBelowCritical >= kCalmEvaluations)
        setSeverity(finding, Severity::Warning);
    return finding.evaluationsAbsent < kCalmEvaluations;
}

/// Returns the pre-failure attributes by ID; of a repeated ID the lowest value counts.
QMap<quint32, AttributeEntry> preFailureAttributes(const QVector<AttributeEntry> &attributes)
{
    QMap<quint32, AttributeEntry> result;
    for (const AttributeEntry &attribute : attributes) {
        const auto known = result.constFind(attribute.id);
        if (attribute.notPrefailure == 0 && (known == result.cend() || attribute.current < known->current))
            result.insert(attribute.id, attribute);
    }
    return result;
}

void updateAttributes(DriveAlerts &drive, const DriveEvaluation &evaluation, const QDateTime &now)
{
    const auto attributes = preFailureAttributes(evaluation.attributes);
    for (const AttributeEntry &attribute : attributes) {
        const auto severity = Severity(attributeLevel(attribute));
        Finding *finding = drive.find(FindingKind::Attribute, attribute.id);
        if (!finding && severity != Severity::Fine)
            finding = &start(drive, FindingKind::Attribute, attribute.id, severity, now);
        if (finding)
            storeValues(*finding, attribute);
    }
    const auto hasEnded = [&attributes](Finding &finding) {
        if (finding.kind != FindingKind::Attribute)
            return false;
        const auto attribute = attributes.constFind(finding.id);
        return !isStillPresent(
            finding, attribute == attributes.cend() ? Severity::Fine : Severity(attributeLevel(*attribute)));
    };
    auto &findings = drive.findings;
    findings.erase(std::remove_if(findings.begin(), findings.end(), hasEnded), findings.end());
}

/// Compares a raw value with its baseline, and with the one before while there is a finding.
void updateRawValue(DriveAlerts &drive, const AttributeEntry &attribute, const QDateTime &now)
{
    if (!drive.baselines.contains(attribute.id))
        drive.baselines.insert(attribute.id, attribute.raw);
    quint64 &baseline = drive.baselines[attribute.id];
    Finding *finding = drive.find(FindingKind::Growth, attribute.id);
    if (!finding && attribute.raw <= baseline) {
        baseline = attribute.raw;
        return;
    }
    if (!finding || attribute.raw > finding->raw) {
        finding = &findOrStart(drive, FindingKind::Growth, attribute.id, Severity::Warning, now);
        finding->lastGrowth = now;
    }
    finding->baseline = baseline;
    storeValues(*finding, attribute);
}

void updateGrowth(DriveAlerts &drive, const DriveEvaluation &evaluation, const AlertRules &rules,
                  const QDateTime &now)
{
    for (const AttributeEntry &attribute : evaluation.attributes) {
        if (rules.growthIds.contains(attribute.id))
            updateRawValue(drive, attribute, now);
    }
    const auto hasEnded = [&](const Finding &finding) {
        if (finding.kind != FindingKind::Growth)
            return false;
        const bool isWatched = rules.growthIds.contains(finding.id);
        if (isWatched && finding.lastGrowth.secsTo(now) < kCalmSeconds)
            return false;
        drive.baselines[finding.id] = finding.raw;
        return true;
    };
    auto &findings = drive.findings;
    findings.erase(std::remove_if(findings.begin(), findings.end(), hasEnded), findings.end());
}

void updateReadability(DriveAlerts &drive, ReadOutcome read, const QDateTime &now)
{
    switch (read) {
    case ReadOutcome::NotPolled:
        return;
    case ReadOutcome::Succeeded:
        drive.isKnown = true;
        break;
    case ReadOutcome::Asleep:
        break;
    case ReadOutcome::Failed:
        // A drive that was never read has no S.M.A.R.T. data to lose.
        if (drive.isKnown && ++drive.failedPolls >= kFailedPolls)
            findOrStart(drive, FindingKind::Unreadable, 0, Severity::Critical, now);
        return;
    }
    drive.failedPolls = 0;
    drive.remove(FindingKind::Unreadable);
}

bool isWorse(const Finding &finding, const Finding::Acknowledgement &acknowledged)
{
    if (finding.severity > acknowledged.severity)
        return true;
    switch (finding.kind) {
    case FindingKind::Temperature:
        return finding.value >= acknowledged.value + kWorseCelsius;
    case FindingKind::Attribute:
        return finding.value < acknowledged.value;
    case FindingKind::Growth:
        return finding.raw > acknowledged.raw;
    case FindingKind::Unreadable:
        break;
    }
    return false;
}

/// Sorts as the alert text lists them: by kind, attributes in the drive's own order.
void sortFindings(DriveAlerts &drive, const QVector<AttributeEntry> &attributes)
{
    QMap<quint32, int> places;
    for (int i = 0; i < attributes.size(); ++i)
        places.insert(attributes.at(i).id, i);
    const auto isBefore = [&places](const Finding &a, const Finding &b) {
        return a.kind != b.kind ? a.kind < b.kind : places.value(a.id, -1) < places.value(b.id, -1);
    };
    std::stable_sort(drive.findings.begin(), drive.findings.end(), isBefore);
}

void updateByValues(DriveAlerts &drive, const DriveEvaluation &evaluation, const AlertRules &rules,
                    const QDateTime &now)
{
    drive.level = evaluation.level;
    drive.healthPercent = evaluation.healthPercent;
    drive.temperatureCelsius = evaluation.temperatureCelsius;
    updateTemperature(drive, evaluation, rules, now);
    updateAttributes(drive, evaluation, now);
    updateGrowth(drive, evaluation, rules, now);
    for (Finding &finding : drive.findings) {
        if (finding.acknowledged && isWorse(finding, *finding.acknowledged)) {
            finding.acknowledged.reset();
            finding.delivered = Severity::Fine;
        }
    }
}

} // namespace

void updateFindings(DriveAlerts &drive, const DriveEvaluation &evaluation, const AlertRules &rules,
                    const QDateTime &now)
{
    updateReadability(drive, evaluation.read, now);
    // After a failed poll the record holds the values of an earlier one.
    if (evaluation.isEvaluated && drive.failedPolls == 0)
        updateByValues(drive, evaluation, rules, now);
    sortFindings(drive, evaluation.attributes);
}

void updateMissingDrive(DriveAlerts &drive, const QDateTime &now)
{
    drive.isListed = false;
    drive.level.reset();
    drive.healthPercent.reset();
    drive.temperatureCelsius.reset();
    if (drive.isKnown)
        findOrStart(drive, FindingKind::Unreadable, 0, Severity::Critical, now);
    sortFindings(drive, {});
}
void acknowledge(DriveAlerts &drive, Finding &finding)
{
    finding.acknowledged = Finding::Acknowledgement{finding.severity, finding.value, finding.raw};
    if (finding.kind == FindingKind::Growth) {
        finding.baseline = finding.raw;
        drive.baselines[finding.id] = finding.raw;
    }
}
