// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { h } from "../lib/dom.js";

/**
 * Asks a question and returns whether it was confirmed. The browser keeps the focus inside; Escape cancels.
 * @param {string} title @param {string} text @param {string} verb the name of the confirming button
 * @returns {Promise<boolean>}
 */
export function confirmed(title, text, verb) {
    const dialog = h(
        "dialog",
        { "aria-labelledby": "dialog-title", "aria-describedby": "dialog-text" },
        h(
            "form",
            { method: "dialog" },
            h("h2", { id: "dialog-title" }, title),
            h("p", { id: "dialog-text" }, text),
            h(
                "div",
                { class: "buttons" },
                h("button", { value: "", class: "secondary" }, "Cancel"),
                h("button", { value: "yes" }, verb),
            ),
        ),
    );
    document.body.append(dialog);
    dialog.showModal();
    return new Promise(resolve =>
        dialog.addEventListener("close", () => {
            dialog.remove();
            resolve(dialog.returnValue === "yes");
        }),
    );
}
