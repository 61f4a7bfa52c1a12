// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { sendToDrive } from "../lib/api.js";
import { h } from "../lib/dom.js";
import { countText, durationText, numberText, sizeText, shortTimeText } from "../lib/format.js";
import { bytesPerSecond, hasRun, secondsLeft, sectorsOf, stateText } from "../lib/scan_progress.js";
import { bar } from "../widgets/bar.js";
import { confirmed } from "../widgets/dialog.js";
import { field, input } from "../widgets/fields.js";
import { attempt } from "../widgets/notice.js";
import { Panel } from "../widgets/panel.js";
import { surfaceMap } from "../widgets/surface_map.js";

const kBlockBytes = 262_144;
const kRangesShown = 8;

/** The surface scan of a drive: its map, progress and, for operators, its start and stop. */
export class ScanPanel {
    /** @param {import("../app.js").Context} context @param {string} service @param {() => void} changed */
    constructor(context, service, changed) {
        this.context = context;
        this.service = service;
        this.changed = changed;
        this.panel = new Panel("Surface scan");
        /** @type {import("../lib/scan_progress.js").Sample[]} */
        this.samples = [];
    }

    /** @param {DriveDetail} drive @param {Scan | undefined} scan */
    show(drive, scan) {
        this.sample(scan);
        const { canOperate } = this.context.rights();
        this.panel.show([drive.number, drive.serial, drive.capacityBytes, scan, canOperate], () => [
            h("p", { class: "scan-state" }, h("strong", {}, stateText(scan)), ...this.details(scan)),
            scan?.running ? bar(scan.percent ?? 0, stateText(scan)) : null,
            surfaceMap(drive, scan),
            badRanges(scan),
            canOperate ? this.controls(drive, scan) : null,
        ]);
    }

    /** Remembers the position of a running scan, so that its speed can be derived. @param {Scan | undefined} scan */
    sample(scan) {
        const sector = Number(scan?.currentSector ?? NaN);
        if (!scan?.running || sector < (this.samples[this.samples.length - 1]?.sector ?? 0))
            this.samples = [];
        if (scan?.running && sector !== this.samples[this.samples.length - 1]?.sector)
            this.samples = [...this.samples.slice(-1), { sector, timeMs: Date.now() }];
    }

    /** @param {Scan | undefined} scan */
    details(scan) {
        if (!scan || !hasRun(scan)) return [];
        if (!scan.running) return [` · ended ${shortTimeText(scan.ended)}`];
        const rate = bytesPerSecond(scan, this.samples, Date.now());
        const left = secondsLeft(scan, rate);
        return [
            ` · since ${shortTimeText(scan.started)}`,
            rate ? ` · ${sizeText(rate)}/s` : null,
            left === null ? null : ` · ${durationText(left)} left`,
        ];
    }

    /** @param {DriveDetail} drive @param {Scan | undefined} scan */
    controls(drive, scan) {
        if (scan?.running)
            return h(
                "button",
                {
                    type: "button",
                    id: "scan-stop",
                    class: "danger",
                    onclick: (/** @type {Event} */ event) =>
                        this.stop(drive, /** @type {HTMLButtonElement} */ (event.currentTarget)),
                },
                "Stop the scan",
            );
        const last = sectorsOf(drive) - 1;
        const number = { type: "number", min: 0, max: last, required: true };
        const form = h(
            "form",
            { class: "inline-form" },
            field("first", "First sector", { ...number, value: 0 }),
            field("last", "Last sector", { ...number, value: last }),
            h("button", { id: "scan-start" }, "Start a scan"),
        );
        form.addEventListener("submit", event => {
            event.preventDefault();
            void this.start(drive, form);
        });
        return form;
    }

    /** @param {DriveDetail} drive @param {HTMLFormElement} form */
    async start(drive, form) {
        const first = Number(input(form, "first").value);
        const last = Number(input(form, "last").value);
        const button = form.querySelector("button");
        const isWhole = first === 0 && last === sectorsOf(drive) - 1;
        if (
            isWhole &&
            !(await confirmed(
                `Scan all of ${drive.model}?`,
                `The scan reads all ${sizeText(drive.capacityBytes)} of drive ${drive.number}. It takes hours and slows down other access to the drive. It can be stopped at any time.`,
                "Start the scan",
            ))
        )
            return;
        await attempt(button, async () => {
            await sendToDrive("POST", this.service, drive, "scan", { first, last, block: kBlockBytes });
            return `The scan of drive ${drive.number} has started.`;
        });
        this.changed();
    }

    /** @param {DriveDetail} drive @param {HTMLButtonElement} button */
    async stop(drive, button) {
        await attempt(button, async () => {
            await sendToDrive("DELETE", this.service, drive, "scan");
            return `The scan of drive ${drive.number} was stopped.`;
        });
        this.changed();
    }
}

/** @param {Scan | undefined} scan */
function badRanges(scan) {
    const ranges = scan?.badSectors ?? [];
    if (!ranges.length) return null;
    const line = (/** @type {Scan["badSectors"][0]} */ [first, last]) =>
        h("li", {}, `${numberText(first)} – ${numberText(last)}`);
    return h(
        "details",
        { class: "bad-ranges", open: ranges.length <= kRangesShown },
        h("summary", {}, h("strong", { class: "error-text" }, countText(ranges.length, "bad range"))),
        h("ol", {}, ...ranges.map(line)),
    );
}
