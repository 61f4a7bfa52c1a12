// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { read } from "../lib/api.js";
import { fill, h } from "../lib/dom.js";
import { clockText, dayText, timeText } from "../lib/format.js";
import { address, driveAddress } from "../lib/router.js";
import { kRanges, queryOf, windowOf } from "../lib/time_window.js";
import { select } from "../widgets/fields.js";
import { emptyText, Panel } from "../widgets/panel.js";

/** @type {Record<HistoryEvent["kind"], string>} */
export const kEventNames = {
    level: "Level",
    finding: "Finding",
    recovered: "Recovered",
    appeared: "New drive",
    lost: "Drive lost",
    returned: "Drive returned",
    scan: "Scan",
    service: "Service",
};

const kLimit = 1000;

/** @param {HistoryEvent} event @param {boolean} namesDrive */
function eventLine(event, namesDrive) {
    const name = event.model ? `${event.model} (${event.serial || "no serial"})` : null;
    const drive =
        name && event.drive !== null
            ? h("a", { href: driveAddress(event.service, event.drive) }, name)
            : name;
    return h(
        "li",
        { class: "event" },
        h("time", { datetime: event.time, title: timeText(event.time) }, clockText(event.time)),
        h("span", { class: `event-kind is-${event.kind}` }, kEventNames[event.kind] ?? event.kind),
        h(
            "span",
            { class: "event-text" },
            event.text,
            namesDrive
                ? h(
                      "span",
                      { class: "quiet" },
                      drive,
                      drive ? " · " : null,
                      h("a", { href: address("services", event.service) }, event.service),
                  )
                : null,
        ),
    );
}

/** Returns events in groups, one a day. @param {HistoryEvent[]} events newest first @param {boolean} namesDrive */
export function eventList(events, namesDrive) {
    if (!events.length) return emptyText("There are no events.");
    const list = h("div", { class: "events" });
    let day = "";
    let group = h("ol", {});
    for (const event of events) {
        if (dayText(event.time) !== day) {
            day = dayText(event.time);
            group = h("ol", {});
            list.append(h("h3", {}, day), group);
        }
        group.append(eventLine(event, namesDrive));
    }
    return list;
}

/** The events of all services. @implements {View} */
export class EventsView {
    constructor() {
        this.title = "Events";
        this.signature = "";
        const ranges = /** @type {[string, string][]} */ (
            kRanges.map(([word, name]) => [word, word === "all" ? "All" : `Last ${name.toLowerCase()}`])
        );
        const kinds = /** @type {[string, string][]} */ ([["", "All kinds"], ...Object.entries(kEventNames)]);
        this.form = h(
            "form",
            { class: "inline-form" },
            select("range", "Span of time", ranges, "week"),
            select("kind", "Kind", kinds, ""),
        );
        this.form.addEventListener("change", () => this.update());
        this.panel = new Panel("Events of all services");
        this.list = h("div", {});
        fill(this.panel.body, this.form, this.list);
        this.element = h("div", {}, h("h1", { tabindex: -1 }, "Events"), this.panel.element);
        this.update();
    }

    async update() {
        const values = new FormData(this.form);
        const window = windowOf(String(values.get("range")), Date.now());
        try {
            /** @type {Reply<HistoryEvent[]>} */
            const reply = await read(`events?${queryOf(window)}&limit=${kLimit}`);
            const kind = String(values.get("kind"));
            this.show(reply.data.filter(event => !kind || event.kind === kind));
        } catch (error) {
            fill(
                this.list,
                h(
                    "p",
                    { class: "error-text", role: "alert" },
                    `The events cannot be read: ${error instanceof Error ? error.message : error}.`,
                ),
            );
        }
    }

    /** @param {HistoryEvent[]} events */
    show(events) {
        const signature = JSON.stringify(events);
        if (signature === this.signature) return;
        this.signature = signature;
        fill(
            this.list,
            eventList(events, true),
            events.length >= kLimit
                ? h("p", { class: "quiet" }, `Only the newest ${kLimit} are shown.`)
                : null,
        );
    }
}
