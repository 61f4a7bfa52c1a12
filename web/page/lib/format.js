// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { usesFahrenheit } from "./preferences.js";

/** Texts for values. What is not known is a dash. */

export const kUnknown = "–";

const kHoursPerDay = 24;
const kDaysPerYear = 365.25;
const kMinuteS = 60;
const kHourS = 3600;
const kDayS = 86400;

const timeFormat = new Intl.DateTimeFormat(undefined, { dateStyle: "medium", timeStyle: "medium" });
const shortFormat = new Intl.DateTimeFormat(undefined, { dateStyle: "medium", timeStyle: "short" });
const dayFormat = new Intl.DateTimeFormat(undefined, { dateStyle: "full" });
const clockFormat = new Intl.DateTimeFormat(undefined, { timeStyle: "short" });
const numberFormat = new Intl.NumberFormat();

/** @param {LargeNumber | null | undefined} value */
export function numberText(value) {
    if (value === null || value === undefined) return kUnknown;
    return numberFormat.format(
        typeof value === "string" && /^\d+$/.test(value) ? BigInt(value) : Number(value),
    );
}

/** Returns a size in decimal units with three digits, as drives are sold. @param {LargeNumber} bytes */
export function sizeText(bytes) {
    const units = ["B", "kB", "MB", "GB", "TB", "PB", "EB"];
    let value = Number(bytes);
    let unit = 0;
    while (value >= 999.5 && unit < units.length - 1) {
        value /= 1000;
        ++unit;
    }
    const decimals = unit === 0 || value >= 99.95 ? 0 : value >= 9.995 ? 1 : 2;
    return `${value.toFixed(decimals)} ${units[unit]}`;
}

/** Converts degrees Celsius to the unit that is shown. @param {number} celsius */
export function shownDegrees(celsius) {
    return usesFahrenheit() ? (celsius * 9) / 5 + 32 : celsius;
}

export function degreeUnit() {
    return usesFahrenheit() ? "°F" : "°C";
}

/** @param {number | null | undefined} celsius */
export function temperatureText(celsius) {
    if (celsius === null || celsius === undefined) return kUnknown;
    return `${Math.round(shownDegrees(celsius))} ${degreeUnit()}`;
}

/** @param {Drive} drive */
export function powerOnText(drive) {
    const hours = drive.powerOnHours;
    if (hours === null || hours === undefined) return kUnknown;
    const days = hours / kHoursPerDay;
    if (days < 2) return `${numberText(Math.round(hours))} h`;
    return days < kDaysPerYear ? `${Math.round(days)} days` : `${(days / kDaysPerYear).toFixed(1)} years`;
}

/** @param {number} seconds */
export function durationText(seconds) {
    const whole = Math.max(0, Math.round(seconds));
    if (whole < kMinuteS) return `${whole} s`;
    if (whole < kHourS) return `${Math.floor(whole / kMinuteS)} min`;
    if (whole < kDayS)
        return `${Math.floor(whole / kHourS)} h ${Math.floor((whole % kHourS) / kMinuteS)} min`;
    return `${Math.floor(whole / kDayS)} d ${Math.floor((whole % kDayS) / kHourS)} h`;
}

/** @param {Timestamp | Date | null | undefined} time */
function dateOf(time) {
    const date = time ? new Date(time) : null;
    return date && !Number.isNaN(date.getTime()) ? date : null;
}

/** Returns date and time in the browser's zone. @param {Timestamp | Date | null | undefined} time */
export function timeText(time) {
    const date = dateOf(time);
    return date ? timeFormat.format(date) : kUnknown;
}

/** Returns the time of day, with the date unless it is today's. @param {Timestamp | Date | null | undefined} time */
export function shortTimeText(time) {
    const date = dateOf(time);
    if (!date) return kUnknown;
    return date.toDateString() === new Date().toDateString()
        ? clockFormat.format(date)
        : shortFormat.format(date);
}

/** @param {Timestamp} time */
export function dayText(time) {
    const date = dateOf(time);
    return date ? dayFormat.format(date) : kUnknown;
}

/** @param {Timestamp} time */
export function clockText(time) {
    const date = dateOf(time);
    return date ? clockFormat.format(date) : kUnknown;
}

/** Returns how long ago `time` was. @param {Timestamp | Date | null} time */
export function agoText(time) {
    const date = dateOf(time);
    if (!date) return "never";
    const seconds = (Date.now() - date.getTime()) / 1000;
    return seconds < 5 ? "just now" : `${durationText(seconds)} ago`;
}

/** Returns the zone that times are shown in, with its present distance from UTC. */
export function zoneText() {
    const zone = Intl.DateTimeFormat().resolvedOptions().timeZone;
    const minutes = -new Date().getTimezoneOffset();
    const two = (/** @type {number} */ value) => String(Math.floor(value)).padStart(2, "0");
    const distance = Math.abs(minutes);
    return `${zone} (UTC${minutes < 0 ? "−" : "+"}${two(distance / 60)}:${two(distance % 60)})`;
}

/** @param {number} count @param {string} one @param {string} [many] */
export function countText(count, one, many = `${one}s`) {
    return `${numberText(count)} ${count === 1 ? one : many}`;
}
