// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

/**
 * Creation of elements. Texts become text nodes, so data never turns into markup, and no style attribute
 * is written, so the page works under a policy without inline styles.
 */

/** @typedef {Node | string | number | null | undefined | false} Child */
/** @typedef {Record<string, unknown>} Properties */

const kSvg = "http://www.w3.org/2000/svg";

/**
 * Sets attributes; a function under `onclick` and the like becomes a listener; true is an empty attribute;
 * null, undefined and false leave the attribute out (for `aria-…` false is written).
 * @param {Element} element @param {Properties} properties
 */
function assign(element, properties) {
    for (const [name, value] of Object.entries(properties)) {
        if (typeof value === "function")
            element.addEventListener(name.slice(2), /** @type {EventListener} */ (value));
        else if (name.startsWith("aria-") && typeof value === "boolean")
            element.setAttribute(name, String(value));
        else if (value === true) element.setAttribute(name, "");
        else if (value !== null && value !== undefined && value !== false)
            element.setAttribute(name, String(value));
    }
}

/** @param {Element} element @param {Child[]} children */
function append(element, children) {
    for (const child of children) {
        if (child === null || child === undefined || child === false) continue;
        element.append(child instanceof Node ? child : String(child));
    }
}

/**
 * Returns a new HTML element.
 * @template {keyof HTMLElementTagNameMap} T
 * @param {T} tag @param {Properties} properties @param {Child[]} children
 * @returns {HTMLElementTagNameMap[T]}
 */
export function h(tag, properties = {}, ...children) {
    const element = document.createElement(tag);
    assign(element, properties);
    append(element, children);
    return element;
}

/**
 * Returns a new SVG element.
 * @param {string} tag @param {Properties} properties @param {Child[]} children
 * @returns {SVGElement}
 */
export function svg(tag, properties = {}, ...children) {
    const element = /** @type {SVGElement} */ (document.createElementNS(kSvg, tag));
    assign(element, properties);
    append(element, children);
    return element;
}

/** Replaces the content of `element`. @param {Element} element @param {Child[]} children */
export function fill(element, ...children) {
    element.replaceChildren();
    append(element, children);
}

/** Returns text that only screen readers present. @param {string} text */
export function hiddenText(text) {
    return h("span", { class: "visually-hidden" }, text);
}

/** Returns the element of the page's own markup with this id. @param {string} id */
export function byId(id) {
    const element = document.getElementById(id);
    if (!element) throw new Error(`the page has no element '${id}'`);
    return element;
}
