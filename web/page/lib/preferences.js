// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

const kUnitKey = "halvex-temperature-unit";
const kFahrenheitRegions = ["US", "BS", "BZ", "KY", "PW", "LR", "FM", "MH"];

/** The stored choice, else the custom of the browser's region. */
function initialUnit() {
    let stored = null;
    try {
        stored = localStorage.getItem(kUnitKey);
    } catch {
        /* storage may be forbidden */
    }
    return stored ? stored === "F" : kFahrenheitRegions.includes(navigator.language.split("-")[1]);
}

let isFahrenheit = initialUnit();

/** Returns whether temperatures are shown in °F. */
export function usesFahrenheit() {
    return isFahrenheit;
}

/** @param {boolean} value */
export function setFahrenheit(value) {
    isFahrenheit = value;
    try {
        localStorage.setItem(kUnitKey, value ? "F" : "C");
    } catch {
        /* then the choice lasts until the page is closed */
    }
}
