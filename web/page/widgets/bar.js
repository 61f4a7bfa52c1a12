// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { h } from "../lib/dom.js";

/**
 * Returns a horizontal bar. @param {number} percent @param {string} label text for screen readers
 * @param {string} [kind] a class for its colour
 */
export function bar(percent, label, kind = "") {
    const shown = Math.max(0, Math.min(100, percent));
    const filled = h("span", { class: "bar-filled" });
    filled.style.width = `${shown}%`;
    return h("span", { class: `bar ${kind}`, role: "img", "aria-label": label }, filled);
}
