// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { h, hiddenText } from "../lib/dom.js";
import { kUnknown, powerOnText, sizeText, temperatureText } from "../lib/format.js";
import { isOld } from "../lib/levels.js";
import { usesFahrenheit } from "../lib/preferences.js";
import { driveAddress } from "../lib/router.js";
import { hasRun, stateText } from "../lib/scan_progress.js";
import { oldNote } from "../widgets/age.js";
import { levelBadge } from "../widgets/badge.js";
import { bar } from "../widgets/bar.js";
import { rebuild } from "../widgets/panel.js";
import { temperatureSparkline } from "../widgets/sparkline.js";
import { row, table } from "../widgets/table.js";

/** @typedef {import("../lib/levels.js").Entry} Entry */

const kColumns = [
    { name: "Level", class: "col-level" },
    { name: "Drive", class: "col-drive" },
    { name: "Service", class: "col-service" },
    { name: "Size", class: "col-size number" },
    { name: "Temperature", class: "col-temperature" },
    { name: "Health", class: "col-health" },
    { name: "Power-on", class: "col-power number" },
    { name: "Surface scan", class: "col-scan" },
];

const kTurnMs = 25; // a list of thousands is built in turns, so the page answers meanwhile

/** @param {Entry} entry */
function temperatureCell({ drive }) {
    const known = drive.temperatures.filter(value => value !== null);
    const label = known.length
        ? `Last day: ${temperatureText(Math.min(...known))} to ${temperatureText(Math.max(...known))}`
        : "";
    return h(
        "span",
        { class: "temperature" },
        h("span", { class: "temperature-value" }, temperatureText(drive.temperatureCelsius)),
        known.length ? temperatureSparkline(drive.temperatures, label) : null,
    );
}

/** @param {number | null} percent @param {Level | null} level */
export function healthCell(percent, level) {
    if (percent === null) return h("span", {}, kUnknown);
    return h(
        "span",
        { class: "health" },
        h("span", { class: "health-value" }, `${percent} %`),
        bar(percent, `Health ${percent} percent`, `is-${level ?? "unrated"}`),
    );
}

/** @param {Scan | undefined} scan */
function scanCell(scan) {
    if (!scan || (!hasRun(scan) && !scan.failed))
        return h("span", { class: "quiet" }, kUnknown, hiddenText("never scanned"));
    const text = stateText(scan);
    const bad = scan.badSectors.length;
    return h(
        "span",
        { class: "scan" },
        h("span", {}, text),
        scan.running ? bar(scan.percent ?? 0, text) : null,
        bad ? h("span", { class: "error-text" }, bad === 1 ? "1 bad range" : `${bad} bad ranges`) : null,
    );
}

/** @param {Entry} entry @param {Scan | undefined} scan */
function driveRow(entry, scan) {
    const { service, drive } = entry;
    const element = row(kColumns, [
        levelBadge(drive.level),
        h(
            "span",
            { class: "drive-name" },
            h(
                "a",
                { href: driveAddress(service.name, drive.number) },
                drive.model || `Drive ${drive.number}`,
            ),
            h("span", { class: "quiet serial" }, drive.serial),
        ),
        h("span", {}, service.name, isOld(service) ? oldNote(service.lastAnswer) : null),
        sizeText(drive.capacityBytes),
        temperatureCell(entry),
        healthCell(drive.healthPercent, drive.level),
        powerOnText(drive),
        scanCell(scan),
    ]);
    element.classList.toggle("is-old", isOld(service));
    return element;
}

/** The list of drives. Rows are kept between polls and replaced only when their values changed. */
export class DriveList {
    constructor() {
        const { element, body } = table("Drives, worst first", kColumns, "drive-list");
        this.element = element;
        this.body = body;
        /** @type {Map<string, {signature: string, element: HTMLElement}>} */
        this.rows = new Map();
        this.turn = 0;
    }

    /** @param {Entry[]} entries in the order of the list @param {import("../lib/store.js").Store} store */
    show(entries, store) {
        clearTimeout(this.turn);
        const cursor = { next: 0, element: this.body.firstElementChild };
        const work = () => {
            const end = performance.now() + kTurnMs;
            while (cursor.next < entries.length && performance.now() < end)
                this.place(this.rowOf(entries[cursor.next++], store), cursor);
            if (cursor.next < entries.length) this.turn = setTimeout(work);
            else this.removeFrom(cursor.element);
        };
        rebuild(this.body, work, null);
    }

    /** @param {Entry} entry @param {import("../lib/store.js").Store} store */
    rowOf(entry, store) {
        const { service, drive } = entry;
        const key = `${service.name}/${drive.number}`;
        const scan = store.scan(service.name, drive.number);
        const signature = JSON.stringify([
            drive,
            scan,
            isOld(service) && service.lastAnswer,
            usesFahrenheit(),
        ]);
        const known = this.rows.get(key);
        if (known?.signature === signature) return known.element;
        const element = driveRow(entry, scan);
        known?.element.replaceWith(element);
        this.rows.set(key, { signature, element });
        return element;
    }

    /** @param {HTMLElement} element @param {{element: Element | null}} cursor */
    place(element, cursor) {
        if (cursor.element && cursor.element.parentNode !== this.body) cursor.element = element; // its row was just replaced by this one
        if (element === cursor.element) cursor.element = element.nextElementSibling;
        else this.body.insertBefore(element, cursor.element);
    }

    /** @param {Element | null} element */
    removeFrom(element) {
        while (element) {
            const next = element.nextElementSibling;
            element.remove();
            element = next;
        }
    }

    close() {
        clearTimeout(this.turn);
    }
}
