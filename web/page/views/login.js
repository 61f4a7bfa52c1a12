// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { send } from "../lib/api.js";
import { byId } from "../lib/dom.js";
import { input } from "../widgets/fields.js";

/** The login form, which is part of the page's own markup. @param {() => void} loggedIn runs after a login */
export function setUpLogin(loggedIn) {
    const form = /** @type {HTMLFormElement} */ (byId("login-form"));
    const message = byId("login-message");
    form.addEventListener("submit", async event => {
        event.preventDefault();
        const button = /** @type {HTMLButtonElement} */ (form.querySelector("button"));
        button.disabled = true;
        message.textContent = "";
        try {
            await send("POST", "login", {
                name: input(form, "name").value,
                password: input(form, "password").value,
            });
            form.reset();
            loggedIn();
        } catch (error) {
            message.textContent = `Login failed: ${error instanceof Error ? error.message : error}.`;
            input(form, "password").focus();
        } finally {
            button.disabled = false;
        }
    });
}

/** Shows the login form in place of the views, or hides it. @param {boolean} isShown */
export function showLogin(isShown) {
    byId("login").hidden = !isShown;
    byId("view").hidden = isShown;
    byId("navigation").hidden = isShown;
    if (isShown) byId("login-name").focus();
}
