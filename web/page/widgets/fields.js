// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { h } from "../lib/dom.js";

/** Form fields with their labels. */

/**
 * @param {string} name @param {string} label @param {Record<string, unknown>} properties of the input
 * @param {string} [hint]
 */
export function field(name, label, properties, hint) {
    const input = h("input", {
        name,
        id: `field-${name}`,
        "aria-describedby": hint ? `hint-${name}` : null,
        ...properties,
    });
    return h(
        "div",
        { class: "field" },
        h("label", { for: `field-${name}` }, label),
        input,
        hint ? h("small", { id: `hint-${name}` }, hint) : null,
    );
}

/** @param {string} name @param {string} label @param {boolean} isOn */
export function checkbox(name, label, isOn) {
    return h("label", { class: "checkbox" }, h("input", { type: "checkbox", name, checked: isOn }), label);
}

/** @param {string} name @param {string} label @param {[string, string][]} options value and name @param {string} selected */
export function select(name, label, options, selected) {
    return h(
        "div",
        { class: "field" },
        h("label", { for: `field-${name}` }, label),
        h(
            "select",
            { name, id: `field-${name}` },
            ...options.map(([value, text]) => h("option", { value, selected: value === selected }, text)),
        ),
    );
}

/** Returns the input of this name. @param {HTMLFormElement} form @param {string} name */
export function input(form, name) {
    const found = form.elements.namedItem(name);
    if (!(found instanceof HTMLInputElement || found instanceof HTMLSelectElement))
        throw new Error(`the form has no field '${name}'`);
    return found;
}
