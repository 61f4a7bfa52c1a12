// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { byId, h } from "../lib/dom.js";

const kSuccessMs = 6_000;

/** Shows the outcome of an action. A failure stays until it is closed. @param {string} text @param {boolean} isError */
function show(text, isError) {
    const close = h("button", { type: "button", class: "plain", "aria-label": "Close this message" }, "×");
    const element = h(
        "div",
        { class: isError ? "notice is-error" : "notice", role: isError ? "alert" : "status" },
        h("span", {}, text),
        close,
    );
    close.addEventListener("click", () => element.remove());
    byId("notices").append(element);
    if (!isError) setTimeout(() => element.remove(), kSuccessMs);
}

/**
 * Runs an action with its button disabled and shows its outcome. Returns whether it succeeded.
 * @param {HTMLButtonElement | null} button @param {() => Promise<string>} action returns the text of success
 */
export async function attempt(button, action) {
    if (button) button.disabled = true;
    try {
        show(await action(), false);
        return true;
    } catch (error) {
        show(error instanceof Error ? error.message : String(error), true);
        return false;
    } finally {
        if (button) button.disabled = false;
    }
}
