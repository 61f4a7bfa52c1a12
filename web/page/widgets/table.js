// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { h } from "../lib/dom.js";

/** @typedef {{name: string, class?: string}} Column */

/**
 * Tables that become cards on a narrow screen. The roles are explicit because a browser drops a table's own
 * when its rows are laid out as cards.
 */

/**
 * Returns a table with an empty body.
 * @param {string} label @param {Column[]} columns @param {string} [kind] further classes
 */
export function table(label, columns, kind = "") {
    const body = h("tbody", { role: "rowgroup" });
    const head = columns.map(column =>
        h("th", { role: "columnheader", scope: "col", class: column.class }, column.name),
    );
    const element = h(
        "table",
        { role: "table", class: `table ${kind}`, "aria-label": label },
        h("thead", { role: "rowgroup" }, h("tr", { role: "row" }, ...head)),
        body,
    );
    return { element, body };
}

/**
 * Returns a row; a card shows each column's name beside its cell.
 * @param {Column[]} columns @param {import("../lib/dom.js").Child[]} cells
 */
export function row(columns, cells) {
    return h(
        "tr",
        { role: "row" },
        ...cells.map((cell, index) =>
            h("td", { role: "cell", class: columns[index].class, "data-name": columns[index].name }, cell),
        ),
    );
}
