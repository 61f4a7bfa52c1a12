// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { fill, h } from "../lib/dom.js";
import { degreeUnit, shownDegrees, temperatureText, timeText } from "../lib/format.js";

const kHeadroom = 0.09; // of the range, above and below: there is room for the name of a limit
const kGapFactor = 4; // a pause this many times the usual distance interrupts the line

/** @typedef {{name: string, celsius: number, kind: "warning" | "critical"}} Limit */
/** @typedef {[Date, [number | null, number | null, number | null]]} Row minimum, mean, maximum in the shown unit */

/**
 * Returns the rows of a chart, with an empty row where records are missing.
 * @param {TemperaturePoint[]} points in order of time @returns {Row[]}
 */
export function chartRows(points) {
    const times = points.map(point => Date.parse(point.time));
    const distances = times
        .slice(1)
        .map((time, index) => time - times[index])
        .sort((a, b) => a - b);
    const longest = kGapFactor * (distances[Math.floor(distances.length / 2)] ?? Infinity);
    /** @type {Row[]} */
    const rows = [];
    points.forEach(({ min, mean, max }, index) => {
        if (index > 0 && times[index] - times[index - 1] > longest)
            rows.push([new Date(times[index - 1] + 1), [null, null, null]]);
        const shown = (/** @type {number | null} */ value) => (value === null ? null : shownDegrees(value));
        rows.push([new Date(times[index]), [shown(min), shown(mean), shown(max)]]);
    });
    return rows;
}

/** Returns the range of the vertical axis: all values and limits. @param {Row[]} rows @param {Limit[]} limits */
function valueRange(rows, limits) {
    let [low, high] = [Infinity, -Infinity];
    for (const [, [min, , max]] of rows) {
        low = Math.min(low, min ?? Infinity);
        high = Math.max(high, max ?? -Infinity);
    }
    for (const limit of limits) high = Math.max(high, shownDegrees(limit.celsius));
    const room = Math.max(1, (high - low) * kHeadroom);
    return Number.isFinite(low) ? [low - room, high + room] : [0, 100];
}

/** @param {string} name of a colour in the style sheet */
function colour(name) {
    return getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();
}

/**
 * A chart of temperatures with a band from minimum to maximum and a line for each limit. It is drawn by dygraphs.
 * Its legend is left out, because it writes style attributes, which the page's policy forbids.
 */
export class TemperatureChart {
    /** @param {(from: number, to: number) => void} zoomed runs when the user marked a span, in ms since 1970 */
    constructor(zoomed) {
        this.zoomed = zoomed;
        this.host = h("div", { class: "chart", role: "img" });
        this.readout = h("p", { class: "quiet readout" });
        this.element = h("div", {}, this.host, this.readout);
        /** @type {Dygraph | null} */
        this.graph = null;
        this.redraw = () => this.last && this.show(...this.last);
        matchMedia("(prefers-color-scheme: dark)").addEventListener("change", this.redraw);
    }

    close() {
        matchMedia("(prefers-color-scheme: dark)").removeEventListener("change", this.redraw);
        this.graph?.destroy();
        this.graph = null;
    }

    /** @param {TemperaturePoint[]} points @param {Limit[]} limits @param {import("../lib/time_window.js").TimeWindow} window */
    show(points, limits, window) {
        this.last = /** @type {Parameters<TemperatureChart["show"]>} */ ([points, limits, window]);
        this.graph?.destroy();
        this.graph = null;
        this.summary = summaryText(points);
        this.host.setAttribute("aria-label", `Chart of the temperature. ${this.summary}`);
        fill(this.readout, this.summary);
        fill(this.host);
        if (!points.length) {
            fill(this.host, h("p", { class: "empty" }, "There are no records in this span."));
            return;
        }
        const rows = chartRows(points);
        const [first, last] = [rows[0][0].getTime(), rows[rows.length - 1][0].getTime()];
        const graphs = globalThis.window.Dygraph;
        graphs.PLUGINS = graphs.PLUGINS.filter(plugin => plugin !== graphs.Plugins.Legend);
        this.graph = new graphs(
            this.host,
            rows,
            this.options(rows, limits, [Math.max(window.from, first - (last - first)), window.to]),
        );
    }

    /** @param {Row[]} rows @param {Limit[]} limits @param {[number, number]} dateWindow */
    options(rows, limits, dateWindow) {
        return {
            labels: ["Time", `Temperature in ${degreeUnit()}`],
            customBars: true,
            dateWindow,
            valueRange: valueRange(rows, limits),
            colors: [colour("accent")],
            fillAlpha: 0.22,
            strokeWidth: 1.6,
            axisLineColor: colour("line-strong"),
            gridLineColor: colour("line"),
            axisLabelFontSize: 12,
            axisLabelWidth: 64,
            axes: { y: { axisLabelWidth: 34 } },
            highlightCallback: (/** @type {unknown} */ _event, /** @type {number} */ time) =>
                this.describe(rows, time),
            unhighlightCallback: () => fill(this.readout, this.summary ?? ""),
            underlayCallback: (
                /** @type {CanvasRenderingContext2D} */ canvas,
                /** @type {DOMRect & {w: number}} */ area,
                /** @type {Dygraph} */ graph,
            ) => drawLimits(canvas, area, graph, limits),
            zoomCallback: (/** @type {number} */ from, /** @type {number} */ to) => this.zoomed(from, to),
        };
    }

    /** @param {Row[]} rows @param {number} time */
    describe(rows, time) {
        const values = rows.find(row => row[0].getTime() === time)?.[1];
        if (!values || values[1] === null) return;
        const [min, mean, max] = values.map(value => Math.round(value ?? 0));
        const span = min === max ? "" : ` (${min} to ${max})`;
        fill(this.readout, `${timeText(new Date(time))}: ${mean}${span} ${degreeUnit()}`);
    }
}

/** @param {TemperaturePoint[]} points */
function summaryText(points) {
    const known = points.filter(point => point.mean !== null);
    if (!known.length) return "No records.";
    const mean = known.reduce((sum, point) => sum + (point.mean ?? 0), 0) / known.length;
    const min = known.reduce((low, point) => Math.min(low, point.min ?? low), Infinity);
    const max = known.reduce((high, point) => Math.max(high, point.max ?? high), -Infinity);
    return `Minimum ${temperatureText(min)}, mean ${temperatureText(mean)}, maximum ${temperatureText(max)}.`;
}

/** @param {CanvasRenderingContext2D} canvas @param {{x: number, w: number}} area @param {Dygraph} graph @param {Limit[]} limits */
function drawLimits(canvas, area, graph, limits) {
    canvas.save();
    canvas.font = "12px system-ui, sans-serif";
    canvas.setLineDash([5, 4]);
    for (const { name, celsius, kind } of limits) {
        const y = Math.round(graph.toDomYCoord(shownDegrees(celsius))) + 0.5;
        canvas.strokeStyle = canvas.fillStyle = colour(kind);
        canvas.beginPath();
        canvas.moveTo(area.x, y);
        canvas.lineTo(area.x + area.w, y);
        canvas.stroke();
        canvas.fillText(`${name} ${temperatureText(celsius)}`, area.x + 6, y - 4);
    }
    canvas.restore();
}
