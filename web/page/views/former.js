// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { read } from "../lib/api.js";
import { h } from "../lib/dom.js";
import { temperatureText, timeText } from "../lib/format.js";
import { levelBadge } from "../widgets/badge.js";
import { emptyText, Panel } from "../widgets/panel.js";
import { row, table } from "../widgets/table.js";
import { healthCell } from "./drive_list.js";

const kColumns = [
    { name: "Last level" },
    { name: "Drive", class: "col-drive" },
    { name: "Service" },
    { name: "Health", class: "col-health" },
    { name: "Temperature", class: "number" },
    { name: "First seen" },
    { name: "Last seen" },
];

/** @param {FormerDrive} drive */
function driveRow(drive) {
    return row(kColumns, [
        levelBadge(drive.level),
        h(
            "span",
            { class: "drive-name" },
            h("strong", {}, drive.model),
            h("span", { class: "quiet serial" }, drive.serial),
        ),
        drive.service,
        healthCell(drive.healthPercent, drive.level),
        temperatureText(drive.temperatureCelsius),
        timeText(drive.firstSeen),
        timeText(drive.lastSeen),
    ]);
}

/** The drives that are gone. @implements {View} */
export class FormerView {
    constructor() {
        this.title = "Former drives";
        this.panel = new Panel("Drives that are gone");
        this.element = h("div", {}, h("h1", { tabindex: -1 }, "Former drives"), this.panel.element);
        this.update();
    }

    async update() {
        try {
            /** @type {Reply<FormerDrive[]>} */
            const { data } = await read("former");
            this.panel.show([data, temperatureText(0)], () => {
                if (!data.length)
                    return [
                        emptyText(
                            "No drive is gone. A drive that a service no longer lists appears here with its last values.",
                        ),
                    ];
                const { element, body } = table("Former drives", kColumns, "former");
                body.append(...data.map(driveRow));
                return [element];
            });
        } catch (error) {
            const text = error instanceof Error ? error.message : String(error);
            this.panel.show(text, () => [
                h("p", { class: "error-text", role: "alert" }, `The former drives cannot be read: ${text}.`),
            ]);
        }
    }
}
