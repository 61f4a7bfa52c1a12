// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { read, servicePath } from "../lib/api.js";
import { fill, h } from "../lib/dom.js";
import { shortTimeText } from "../lib/format.js";
import { usesFahrenheit } from "../lib/preferences.js";
import { kRanges, moved, queryOf, windowOf, zoomed } from "../lib/time_window.js";
import { emptyText, Panel } from "../widgets/panel.js";
import { TemperatureChart } from "../widgets/temperature_chart.js";

/** @typedef {import("../lib/time_window.js").TimeWindow} TimeWindow */

const kLimits = /** @type {const} */ ([
    ["wTemp", "warning", "Warning"],
    ["cTemp", "critical", "Critical"],
]);

/** The chart of a drive's temperature with its ranges and zoom. */
export class TemperaturePanel {
    /** @param {string} service @param {number} number of the drive */
    constructor(service, number) {
        this.path = servicePath(service, `drives/${number}/temperatures`);
        this.chart = new TemperatureChart((from, to) => this.showWindow({ from, to }));
        /** The range that follows the clock, null while a chosen span is shown. @type {string | null} */
        this.range = "day";
        this.window = windowOf("day", Date.now());
        this.signature = "";
        /** @type {{name: string, celsius: number, kind: "warning" | "critical"}[]} */
        this.limits = [];
        /** @type {AbortController | null} */
        this.request = null;
        this.span = h("p", { class: "quiet", role: "status" });
        this.csv = h("a", { download: "temperatures.csv" }, "Records as CSV");
        this.ranges = h(
            "div",
            { class: "segments", role: "group", "aria-label": "Span of time" },
            ...kRanges.map(([word, name]) =>
                h(
                    "button",
                    { type: "button", "data-range": word, onclick: () => this.showRange(word) },
                    name,
                ),
            ),
        );
        this.panel = new Panel("Temperature");
        this.element = this.panel.element;
        fill(
            this.panel.body,
            h("div", { class: "toolbar" }, this.ranges, this.steps()),
            this.chart.element,
            h("div", { class: "toolbar" }, this.span, this.csv),
        );
    }

    steps() {
        const button = (
            /** @type {string} */ text,
            /** @type {string} */ label,
            /** @type {() => TimeWindow} */ next,
        ) =>
            h(
                "button",
                {
                    type: "button",
                    class: "secondary",
                    "aria-label": label,
                    title: label,
                    onclick: () => this.showWindow(next()),
                },
                text,
            );
        return h(
            "div",
            { class: "segments", role: "group", "aria-label": "Zoom" },
            button("‹", "Earlier", () => moved(this.window, -0.5)),
            button("›", "Later", () => moved(this.window, 0.5)),
            button("+", "Zoom in", () => zoomed(this.window, 0.5)),
            button("−", "Zoom out", () => zoomed(this.window, 2)),
        );
    }

    /** Shows the drive's chart, and the newest records when the range follows the clock. @param {DriveDetail} drive @param {Settings} settings */
    show(drive, settings) {
        this.limits = kLimits.flatMap(([key, kind, name]) => {
            const celsius = settings[key];
            return typeof celsius === "number" ? [{ name, celsius, kind }] : [];
        });
        const signature = JSON.stringify([
            drive.serial,
            drive.temperatureCelsius,
            this.limits,
            usesFahrenheit(),
        ]);
        const isDue = Date.now() - this.window.to > (this.window.to - this.window.from) / 500;
        if (signature === this.signature && !(this.range && isDue)) return;
        this.signature = signature;
        if (this.range) this.showRange(this.range);
        else void this.load();
    }

    /** @param {string} word */
    showRange(word) {
        this.range = word;
        this.window = windowOf(word, Date.now());
        void this.load();
    }

    /** @param {TimeWindow} window */
    showWindow(window) {
        this.range = null;
        this.window = window;
        void this.load();
    }

    async load() {
        this.request?.abort();
        const request = (this.request = new AbortController());
        for (const button of this.ranges.children)
            button.setAttribute("aria-pressed", String(button.getAttribute("data-range") === this.range));
        const query = queryOf(this.window);
        try {
            /** @type {Reply<{points: TemperaturePoint[]}>} */
            const { data } = await read(`${this.path}?${query}&points=500`, request.signal);
            if (request.signal.aborted) return;
            this.chart.show(data.points, this.limits, this.window);
            this.showSpan(data.points);
            this.csv.href = `api/v1/${this.path}?${query}&format=csv`;
        } catch (error) {
            if (!request.signal.aborted)
                fill(
                    this.span,
                    emptyText(
                        `The records could not be read: ${error instanceof Error ? error.message : error}.`,
                    ),
                );
        }
    }

    /** @param {TemperaturePoint[]} points */
    showSpan(points) {
        const from = this.range === "all" && points.length ? points[0].time : new Date(this.window.from);
        fill(this.span, `${shortTimeText(from)} to ${shortTimeText(new Date(this.window.to))}`);
    }

    close() {
        this.request?.abort();
        this.chart.close();
    }
}
