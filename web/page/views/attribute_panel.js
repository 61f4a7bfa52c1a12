// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { read, servicePath } from "../lib/api.js";
import { fill, h } from "../lib/dom.js";
import { countText, numberText, timeText } from "../lib/format.js";
import { queryOf } from "../lib/time_window.js";
import { emptyText, Panel } from "../widgets/panel.js";
import { sparkline } from "../widgets/sparkline.js";
import { row, table } from "../widgets/table.js";

const kColumns = [
    { name: "Id", class: "number" },
    { name: "Attribute", class: "col-attribute" },
    { name: "Value", class: "number" },
    { name: "Worst", class: "number" },
    { name: "Threshold", class: "number" },
    { name: "Raw", class: "number" },
    { name: "Kind" },
    { name: "Last 90 days", class: "col-history" },
];
const kChangeColumns = [
    { name: "Time" },
    { name: "Value", class: "number" },
    { name: "Worst", class: "number" },
    { name: "Raw", class: "number" },
];

const kSpanMs = 90 * 86_400_000;
const kRequests = 3; // at a time
const kChangesShown = 50;

/**
 * @typedef {object} Line
 * @property {Attribute} attribute
 * @property {HTMLElement} element the row
 * @property {HTMLElement} history the button in it
 * @property {AttributeChange[] | null} changes
 */

/**
 * Returns the points of an attribute's small chart: its value, or its raw value while the value stays the same.
 * @param {AttributeChange[]} changes oldest first @param {Attribute} attribute @param {number} now
 */
export function historyPoints(changes, attribute, now) {
    const known = [...changes, { ...attribute, time: new Date(now).toISOString() }];
    const isConstant = known.every(change => change.value === attribute.value);
    return known.map(change => ({
        x: Date.parse(change.time),
        y: isConstant ? Number(change.raw) : change.value,
    }));
}

/** @param {Attribute} attribute */
function kindText(attribute) {
    if (attribute.failing) return h("strong", { class: "error-text" }, "Failing");
    return h("span", { class: "quiet" }, attribute.prefailure ? "Pre-failure" : "Advisory");
}

/** The table of a drive's attributes, each with a small history. */
export class AttributePanel {
    /** @param {string} service @param {number} number of the drive */
    constructor(service, number) {
        this.path = servicePath(service, `drives/${number}/attributes`);
        this.panel = new Panel("Attributes");
        /** @type {Map<string, AttributeChange[]>} changes by attribute, value and raw value */
        this.known = new Map();
        /** @type {Set<number>} attributes whose changes are listed */
        this.opened = new Set();
        this.serial = "";
        this.end = new AbortController();
    }

    /** @param {DriveDetail} drive */
    show(drive) {
        if (drive.serial !== this.serial) this.known.clear();
        this.serial = drive.serial;
        this.panel.show([drive.serial, drive.attributes], () => {
            if (!drive.attributes.length)
                return [emptyText("This drive does not report S.M.A.R.T. attributes.")];
            const { element, body } = table("Attributes", kColumns, "attributes");
            const lines = drive.attributes.map(attribute => this.addLine(body, attribute));
            void this.loadHistories(lines);
            return [element];
        });
    }

    /** @param {HTMLElement} body @param {Attribute} attribute @returns {Line} */
    addLine(body, attribute) {
        const history = h(
            "button",
            {
                type: "button",
                class: "plain history",
                id: `history-${attribute.id}`,
                "aria-expanded": false,
                "aria-label": `History of ${attribute.name}`,
            },
            "…",
        );
        const element = row(kColumns, [
            attribute.id,
            attribute.name,
            attribute.value,
            attribute.worst,
            attribute.threshold,
            numberText(attribute.raw),
            kindText(attribute),
            history,
        ]);
        /** @type {Line} */
        const line = { attribute, element, history, changes: null };
        element.classList.toggle("is-critical", attribute.failing);
        history.addEventListener("click", () => this.toggle(line));
        body.append(element);
        return line;
    }

    /** @param {Line[]} lines */
    async loadHistories(lines) {
        const waiting = [...lines].reverse();
        const work = async () => {
            for (let line = waiting.pop(); line && !this.end.signal.aborted; line = waiting.pop())
                await this.loadHistory(line);
        };
        await Promise.all(Array.from({ length: kRequests }, work));
    }

    /** @param {Line} line */
    async loadHistory(line) {
        const { attribute, history } = line;
        const now = Date.now();
        const key = `${attribute.id}/${attribute.value}/${attribute.raw}`;
        try {
            line.changes = this.known.get(key) ?? (await this.readChanges(attribute.id, now));
            this.known.set(key, line.changes);
            if (this.opened.has(attribute.id)) this.open(line);
            const label = `${attribute.name}: ${countText(line.changes.length, "recorded change")} in 90 days`;
            fill(history, sparkline(historyPoints(line.changes, attribute, now), label, { isStepped: true }));
        } catch {
            fill(history, "–"); // the table is complete without it
        }
    }

    /** @param {number} id @param {number} now */
    async readChanges(id, now) {
        /** @type {Reply<{changes: AttributeChange[]}>} */
        const reply = await read(
            `${this.path}/${id}?${queryOf({ from: now - kSpanMs, to: now })}`,
            this.end.signal,
        );
        return reply.data.changes;
    }

    /** Opens or closes the list of an attribute's changes. @param {Line} line */
    toggle(line) {
        if (this.opened.delete(line.attribute.id)) {
            line.history.setAttribute("aria-expanded", "false");
            line.element.nextElementSibling?.remove();
            return;
        }
        this.opened.add(line.attribute.id);
        this.open(line);
    }

    /** @param {Line} line */
    open(line) {
        line.history.setAttribute("aria-expanded", "true");
        const cell = h("td", { role: "cell", colspan: kColumns.length }, changeTable(line));
        line.element.after(h("tr", { role: "row", class: "expansion" }, cell));
    }

    close() {
        this.end.abort();
    }
}

/** @param {Line} line */
function changeTable({ attribute, changes }) {
    if (!changes?.length) return emptyText("No change was recorded in the last 90 days.");
    const { element, body } = table(`Changes of ${attribute.name}, newest first`, kChangeColumns, "inner");
    const newest = [...changes].reverse().slice(0, kChangesShown);
    body.append(
        ...newest.map(change =>
            row(kChangeColumns, [timeText(change.time), change.value, change.worst, numberText(change.raw)]),
        ),
    );
    return element;
}
