// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

/** Spans of time that charts and lists show. Times are milliseconds since 1970. */

/** @typedef {{from: number, to: number}} TimeWindow */

const kDayMs = 86_400_000;
const kShortestMs = 10 * 60_000;
const kEarliest = Date.UTC(2000, 0, 1); // the history of a service cannot hold an earlier time

/** @type {[string, string, number][]} word, name, length in ms */
export const kRanges = [
    ["day", "Day", kDayMs],
    ["week", "Week", 7 * kDayMs],
    ["month", "Month", 30 * kDayMs],
    ["year", "Year", 365 * kDayMs],
    ["all", "All", Infinity],
];

/** Returns the window of a range that ends now. @param {string} word @param {number} now @returns {TimeWindow} */
export function windowOf(word, now) {
    const length = kRanges.find(range => range[0] === word)?.[2] ?? kDayMs;
    return { from: Math.max(kEarliest, now - length), to: now };
}

/** Returns the window around the same middle, `factor` times as long. @param {TimeWindow} window @param {number} factor */
export function zoomed({ from, to }, factor) {
    const middle = (from + to) / 2;
    const half = Math.max(kShortestMs, (to - from) * factor) / 2;
    return { from: Math.max(kEarliest, middle - half), to: middle + half };
}

/** Returns the window moved by `share` of its length. @param {TimeWindow} window @param {number} share */
export function moved({ from, to }, share) {
    const step = Math.max((to - from) * share, kEarliest - from);
    return { from: from + step, to: to + step };
}

/** Returns the window as query parameters. @param {TimeWindow} window */
export function queryOf({ from, to }) {
    return `from=${encodeURIComponent(new Date(from).toISOString())}&to=${encodeURIComponent(new Date(to).toISOString())}`;
}
