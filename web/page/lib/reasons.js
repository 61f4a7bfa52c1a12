// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { temperatureText, numberText, shortTimeText } from "./format.js";

/** The reasons for a drive's level, in words. */

/**
 * @typedef {object} Reason
 * @property {Finding["kind"]} kind
 * @property {number | null} id of the attribute
 * @property {"warning" | "critical"} severity
 * @property {string} text
 * @property {string} rule whose rule it is
 * @property {Finding} [finding] what the service's alert policy holds about it
 */

const kWarningValue = 10; // an attribute at or below it is a warning whatever its threshold is
const kCriticalValue = 5;

/** @param {DriveDetail} drive @param {Settings} settings @returns {Reason[]} */
function temperatureReasons(drive, settings) {
    const degrees = drive.temperatureCelsius;
    if (degrees === null) return [];
    for (const [key, severity, name] of /** @type {const} */ ([
        ["cTemp", "critical", "critical"],
        ["wTemp", "warning", "warning"],
    ])) {
        const limit = settings[key];
        if (typeof limit === "number" && degrees >= limit)
            return [
                {
                    kind: "temperature",
                    id: null,
                    severity,
                    text: `The temperature is ${temperatureText(degrees)}; ${name} from ${temperatureText(limit)} on.`,
                    rule: "Limit set in this service's settings",
                },
            ];
    }
    return [];
}

/** @param {Attribute} attribute @returns {Reason | null} */
function attributeReason(attribute) {
    const { id, name, value, threshold } = attribute;
    if (!attribute.prefailure) return null;
    const common = { kind: /** @type {const} */ ("attribute"), id };
    const what = `${name} (attribute ${id}) has the value ${value}`;
    if (value <= kCriticalValue)
        return {
            ...common,
            severity: "critical",
            text: `${what}; critical from ${kCriticalValue} down.`,
            rule: "The service's rule for attributes that foretell a failure",
        };
    if (value <= threshold)
        return {
            ...common,
            severity: "warning",
            text: `${what}, at or below its threshold ${threshold}.`,
            rule: "Threshold set by the drive's manufacturer",
        };
    if (value <= kWarningValue)
        return {
            ...common,
            severity: "warning",
            text: `${what}; warning from ${kWarningValue} down.`,
            rule: "The service's rule for attributes that foretell a failure",
        };
    return null;
}

/**
 * Returns why the service gives the drive its level, worst first.
 * @param {DriveDetail} drive @param {Settings} settings
 */
export function levelReasons(drive, settings) {
    if (drive.level === null || drive.level === "fine") return [];
    const reasons = [...temperatureReasons(drive, settings)];
    for (const attribute of drive.attributes) {
        const reason = attributeReason(attribute);
        if (reason) reasons.push(reason);
    }
    return reasons.sort((a, b) => a.severity.localeCompare(b.severity));
}

/** @param {Finding} finding */
export function findingText(finding) {
    const attribute = `${finding.name ?? "Attribute"} (attribute ${finding.id})`;
    switch (finding.kind) {
        case "temperature":
            return `The temperature reached ${temperatureText(finding.value)}; the limit is ${temperatureText(finding.limit)}.`;
        case "attribute":
            return `${attribute} has the value ${finding.value}, threshold ${finding.threshold}.`;
        case "growth":
            return `The raw value of ${attribute} grew from ${numberText(finding.baseline)} to ${numberText(finding.raw)}.`;
        case "unreadable":
            return "The drive cannot be read.";
        default:
            return String(finding.kind);
    }
}

/** @param {Alerts | null} alerts @param {Drive} drive */
function findingsOf(alerts, drive) {
    return (alerts?.findings ?? []).filter(
        finding =>
            finding.serial === drive.serial &&
            finding.model === drive.model &&
            (finding.number === null || finding.number === drive.number),
    );
}

/**
 * Returns the reasons for the drive's level and the findings about it. A finding that a reason explains is joined to it.
 * @param {DriveDetail} drive @param {Settings} settings @param {Alerts | null} alerts
 */
export function allReasons(drive, settings, alerts) {
    const reasons = levelReasons(drive, settings);
    for (const finding of findingsOf(alerts, drive)) {
        const since = `since ${shortTimeText(finding.since)}${finding.acknowledged ? "; acknowledged" : ""}`;
        const reason = reasons.find(
            candidate => candidate.kind === finding.kind && candidate.id === finding.id,
        );
        if (reason) Object.assign(reason, { finding, rule: `${reason.rule}; ${since}` });
        else
            reasons.push({
                kind: finding.kind,
                id: finding.id,
                severity: finding.severity,
                text: findingText(finding),
                rule: `Alert policy of the service, ${since}`,
                finding,
            });
    }
    return reasons;
}

/** Returns a sentence about a drive without reasons. @param {Drive} drive */
export function calmText(drive) {
    if (drive.level === "fine")
        return "Every attribute is above its threshold and the temperature is below its limits.";
    if (!drive.monitored) return "The service does not monitor this drive, so it has no level.";
    return drive.smartState < 0
        ? "The attributes of this drive were not read yet."
        : "This drive does not report S.M.A.R.T. attributes, so it cannot be rated.";
}
