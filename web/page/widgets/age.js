// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { h } from "../lib/dom.js";
import { agoText, shortTimeText, timeText } from "../lib/format.js";

const kRefreshMs = 15_000;

/** Returns how long ago `time` was; the text stays up to date. @param {Timestamp | null} time */
export function age(time) {
    return h("time", { class: "age", datetime: time ?? "", title: timeText(time) }, agoText(time));
}

/** Returns the mark of values that are not the present ones. @param {Timestamp | null} lastAnswer */
export function oldNote(lastAnswer) {
    return h(
        "span",
        { class: "old-note", title: timeText(lastAnswer) },
        lastAnswer ? `Old: ${shortTimeText(lastAnswer)}` : "Old",
    );
}

/** Keeps the texts of all ages up to date. */
export function refreshAges() {
    setInterval(() => {
        for (const element of document.querySelectorAll("time.age"))
            element.textContent = agoText(element.getAttribute("datetime"));
    }, kRefreshMs);
}
