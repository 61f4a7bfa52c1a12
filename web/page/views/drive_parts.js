// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { h } from "../lib/dom.js";
import { kUnknown, numberText, powerOnText, sizeText, temperatureText } from "../lib/format.js";
import { isOld } from "../lib/levels.js";
import { calmText } from "../lib/reasons.js";
import { oldNote } from "../widgets/age.js";
import { levelBadge, sign, stateBadge } from "../widgets/badge.js";
import { bar } from "../widgets/bar.js";
import { emptyText } from "../widgets/panel.js";
import { acknowledgeButton } from "./findings.js";

/** @typedef {import("../lib/dom.js").Child} Child */

const kNearlyFullPercent = 90;

/** @param {string} name @param {string} value */
function fact(name, value) {
    return h(
        "div",
        { class: "fact" },
        h("span", { class: "fact-value" }, value),
        h("span", { class: "quiet" }, name),
    );
}

/**
 * Returns a drive's state and key values.
 * @param {Drive} drive @param {Service | undefined} service
 * @param {Timestamp | null} since time of the values when they are old
 * @returns {Child[]}
 */
export function driveHeader(drive, service, since) {
    return [
        h(
            "div",
            { class: "drive-state" },
            levelBadge(drive.level),
            service && isOld(service) ? stateBadge(service.state) : null,
            since === null ? null : oldNote(since),
            h("span", { class: "quiet" }, `Serial ${drive.serial || kUnknown}`),
        ),
        h(
            "div",
            { class: "facts" },
            fact("Temperature", temperatureText(drive.temperatureCelsius)),
            fact("Health", drive.healthPercent === null ? kUnknown : `${drive.healthPercent} %`),
            fact("Power-on time", powerOnText(drive)),
            fact("Size", sizeText(drive.capacityBytes)),
        ),
    ];
}

/**
 * Returns the reasons for a drive's level.
 * @param {Drive} drive @param {import("../lib/reasons.js").Reason[]} reasons @param {string} service
 * @param {boolean} canOperate @param {() => void} changed runs after a finding was acknowledged
 */
export function reasonList(drive, reasons, service, canOperate, changed) {
    if (!reasons.length) return h("p", {}, calmText(drive));
    return h(
        "ul",
        { class: "reasons" },
        ...reasons.map(({ severity, text, rule, finding }) =>
            h(
                "li",
                { class: `is-${severity}` },
                sign(severity),
                h("span", {}, text),
                h("span", { class: "quiet" }, rule),
                canOperate && finding && !finding.acknowledged
                    ? acknowledgeButton(service, finding, changed)
                    : null,
            ),
        ),
    );
}

/** @param {Volume} volume */
function volumeBar(volume) {
    const total = Number(volume.totalBytes);
    const used = total - Number(volume.freeBytes);
    const percent = total > 0 ? Math.round((100 * used) / total) : 0;
    const details = [volume.label ? volume.volume : "", volume.fileSystem].filter(Boolean).join(" · ");
    return h(
        "div",
        { class: "volume" },
        h(
            "div",
            { class: "volume-head" },
            h("strong", {}, volume.label || volume.volume),
            h("span", { class: "quiet" }, details),
        ),
        bar(percent, `${percent} percent used`, percent >= kNearlyFullPercent ? "is-warning" : ""),
        h("p", { class: "quiet" }, `${sizeText(used)} of ${sizeText(total)} used`),
    );
}

/** @param {Volume[]} volumes @returns {Child[]} */
export function volumeList(volumes) {
    return volumes.length
        ? volumes.map(volumeBar)
        : [emptyText("There are no mounted volumes on this drive.")];
}

/** @param {DriveDetail} drive */
export function identityList(drive) {
    const facts = [
        ["Model", drive.model],
        ["Serial number", drive.serial],
        ["Firmware", drive.firmware],
        ["ATA version", drive.ataVersion],
        ["Capacity", `${numberText(drive.capacityBytes)} bytes`],
        ["Sector size", `${numberText(drive.bytesPerSector)} bytes`],
        ["Number", String(drive.number)],
        ["Power-on counter", numberText(drive.powerOnRaw)],
        ["Attributes", numberText(drive.attributeCount)],
        ["Monitored", drive.monitored ? "yes" : "no"],
    ];
    return h(
        "dl",
        { class: "identity" },
        ...facts.flatMap(([name, value]) => [h("dt", {}, name), h("dd", {}, value || kUnknown)]),
    );
}
