// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { svg } from "../lib/dom.js";

const kWidth = 96;
const kHeight = 24;
const kMargin = 2;

/** @typedef {{x: number, y: number} | null} Point null interrupts the line */

/** Returns the path through `points` within the box of the sparkline. @param {Point[]} points @param {boolean} isStepped */
export function linePath(points, isStepped) {
    const known = points.filter(point => point !== null);
    const xs = known.map(point => point.x);
    const ys = known.map(point => point.y);
    const [left, right] = [Math.min(...xs), Math.max(...xs)];
    const [low, high] = [Math.min(...ys), Math.max(...ys)];
    const flat = high === low;
    const px = (/** @type {number} */ x) =>
        (kMargin + ((x - left) / (right - left || 1)) * (kWidth - 2 * kMargin)).toFixed(1);
    const py = (/** @type {number} */ y) =>
        (flat
            ? kHeight / 2
            : kHeight - kMargin - ((y - low) / (high - low)) * (kHeight - 2 * kMargin)
        ).toFixed(1);
    let path = "";
    let isOpen = false;
    for (const point of points) {
        if (point && isOpen)
            path += isStepped ? `H${px(point.x)}V${py(point.y)}` : `L${px(point.x)} ${py(point.y)}`;
        else if (point) path += `M${px(point.x)} ${py(point.y)}h.01`;
        isOpen = point !== null;
    }
    return path;
}

/**
 * Returns a small chart. @param {Point[]} points @param {string} label text for screen readers
 * @param {{isStepped?: boolean}} [options]
 */
export function sparkline(points, label, { isStepped = false } = {}) {
    return svg(
        "svg",
        { class: "sparkline", viewBox: `0 0 ${kWidth} ${kHeight}`, role: "img", "aria-label": label },
        svg("path", { d: linePath(points, isStepped) }),
    );
}

/** Returns the sparkline of a drive's last day. @param {(number | null)[]} means hourly, °C @param {string} label */
export function temperatureSparkline(means, label) {
    return sparkline(
        means.map((y, x) => (y === null ? null : { x, y })),
        label,
    );
}
