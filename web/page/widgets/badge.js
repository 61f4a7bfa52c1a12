// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { h, svg } from "../lib/dom.js";
import { kLevelNames, kStateNames, levelWord } from "../lib/levels.js";

/** Signs differ in shape and not only in colour. @type {Record<string, string>} */
const kSigns = {
    fine: "M3.2 8.4 6.6 11.8 12.8 4.6",
    warning: "M8 3.2V9M8 12.2V12.6",
    critical: "M4 4 12 12M12 4 4 12",
    unrated: "M4 8H12",
    unreachable: "M4 4 12 12M12 4 4 12",
    paused: "M6 4V12M10 4V12",
    detecting: "M3.5 8h.01M8 8h.01M12.5 8h.01",
    ready: "M3.2 8.4 6.6 11.8 12.8 4.6",
};

/** Returns the sign of a level or state. @param {string} word */
export function sign(word) {
    return svg(
        "svg",
        { class: "sign", viewBox: "0 0 16 16", "aria-hidden": "true" },
        svg("path", { d: kSigns[word] ?? kSigns.unrated }),
    );
}

/** Returns the sign and name of a drive's level. @param {Level | null} level */
export function levelBadge(level) {
    const word = levelWord(level);
    return h("span", { class: `badge is-${word}` }, sign(word), kLevelNames[word]);
}

/** Returns the sign and name of a service's state. @param {Service["state"]} state */
export function stateBadge(state) {
    return h("span", { class: `badge is-${state}` }, sign(state), kStateNames[state] ?? state);
}
