// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

/** The levels of drives and services, and their order: worst first. */

/** @typedef {Level | "unrated"} LevelWord */
/** @typedef {{service: OverviewService, drive: OverviewDrive}} Entry */

/** @type {LevelWord[]} */
export const kLevels = ["critical", "warning", "unrated", "fine"];

/** @type {Record<LevelWord, string>} */
export const kLevelNames = { critical: "Critical", warning: "Warning", unrated: "Not rated", fine: "Fine" };

/** @type {Record<Service["state"], string>} */
export const kStateNames = {
    ready: "Ready",
    detecting: "Detecting drives",
    paused: "Paused",
    unreachable: "Unreachable",
};

/** @param {Level | null} level @returns {LevelWord} */
export function levelWord(level) {
    return level !== null && Object.hasOwn(kLevelNames, level) ? level : "unrated";
}

/** Returns whether the values of the service's drives are not its present ones. @param {Service} service */
export function isOld(service) {
    return service.state !== "ready";
}

/** @param {Entry} a @param {Entry} b */
function compare(a, b) {
    return (
        kLevels.indexOf(levelWord(a.drive.level)) - kLevels.indexOf(levelWord(b.drive.level)) ||
        (a.drive.healthPercent ?? 101) - (b.drive.healthPercent ?? 101) ||
        (b.drive.temperatureCelsius ?? -274) - (a.drive.temperatureCelsius ?? -274) ||
        a.service.name.localeCompare(b.service.name) ||
        a.drive.number - b.drive.number
    );
}

/** Returns the drives of all services, worst first. @param {OverviewService[]} services */
export function worstFirst(services) {
    return services.flatMap(service => service.driveList.map(drive => ({ service, drive }))).sort(compare);
}

/** @param {Entry[]} entries */
export function countLevels(entries) {
    /** @type {Record<LevelWord, number>} */
    const counts = { critical: 0, warning: 0, unrated: 0, fine: 0 };
    for (const { drive } of entries) ++counts[levelWord(drive.level)];
    return counts;
}
