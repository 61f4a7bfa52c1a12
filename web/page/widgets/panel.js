// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { fill, h } from "../lib/dom.js";

let count = 0;

/** A titled part of a view that is built again only when its inputs changed, so focus and selection survive polls. */
export class Panel {
    /** @param {string} title @param {string} [kind] further classes */
    constructor(title, kind = "") {
        const id = `panel-${++count}`;
        this.heading = h("h2", { id, tabindex: -1 }, title);
        this.body = h("div", { class: "panel-body" });
        this.element = h(
            "section",
            { class: `panel ${kind}`, "aria-labelledby": id },
            this.heading,
            this.body,
        );
        this.inputs = "";
    }

    /**
     * @param {unknown} inputs everything that `build` depends on
     * @param {() => import("../lib/dom.js").Child[]} build
     */
    show(inputs, build) {
        const text = JSON.stringify(inputs);
        if (text === this.inputs) return;
        this.inputs = text;
        rebuild(this.body, () => fill(this.body, ...build()), this.heading);
    }
}

/**
 * Replaces the content of `element`. The focus moves to the element that took the place of the focused one, else to
 * `otherwise`; details that were open stay open.
 * @param {Element} element @param {() => void} replace @param {HTMLElement | null} otherwise
 */
export function rebuild(element, replace, otherwise) {
    const details = () => [...element.querySelectorAll("details")];
    const open = details().map(part => part.open);
    const focused = document.activeElement;
    const name = focused && element.contains(focused) ? nameOf(focused) : null;
    replace();
    details().forEach((part, index) => (part.open = open[index] ?? part.open));
    if (name === null) return;
    const same = [...element.querySelectorAll("a, button, input, select, summary")].find(
        candidate => nameOf(candidate) === name,
    );
    (same instanceof HTMLElement ? same : otherwise)?.focus();
}

/** Returns what an element that can be focused has in common with the one that replaces it. @param {Element} element */
function nameOf(element) {
    const name = element.id || element.getAttribute("href") || element.getAttribute("name");
    return `${element.tagName} ${name || element.textContent}`;
}

/** Returns the text of a panel without content. @param {string} text */
export function emptyText(text) {
    return h("p", { class: "empty" }, text);
}
