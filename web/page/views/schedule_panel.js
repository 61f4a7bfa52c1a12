// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { sendToDrive } from "../lib/api.js";
import { h } from "../lib/dom.js";
import { field, input, select } from "../widgets/fields.js";
import { attempt } from "../widgets/notice.js";
import { emptyText, Panel } from "../widgets/panel.js";

const kWeekdays = ["monday", "tuesday", "wednesday", "thursday", "friday", "saturday", "sunday"];

/** @type {[string, string][]} */
const kKinds = [
    ["none", "No schedule"],
    ["once", "Once"],
    ["daily", "Every day"],
    ["weekly", "Every week"],
];

/** @param {string} word */
function capitalised(word) {
    return word.charAt(0).toUpperCase() + word.slice(1);
}

/** Returns the schedule in words; its time is that of the service's clock. @param {Schedule} schedule */
export function scheduleText({ kind, date, time, weekday }) {
    switch (kind) {
        case "none":
            return "No scan is scheduled.";
        case "once":
            return `Once, on ${date} at ${time} (time of the service).`;
        case "daily":
            return `Every day at ${time} (time of the service).`;
        case "weekly":
            return `Every ${capitalised(weekday ?? "")} at ${time} (time of the service).`;
        default:
            return "The stored schedule is not known; it never starts a scan.";
    }
}

/** The schedule of a drive's surface scans; operators can change it. */
export class SchedulePanel {
    /** @param {import("../app.js").Context} context @param {string} service @param {() => void} changed */
    constructor(context, service, changed) {
        this.context = context;
        this.service = service;
        this.changed = changed;
        this.panel = new Panel("Scan schedule");
    }

    /** @param {DriveDetail} drive @param {Schedule | undefined} schedule */
    show(drive, schedule) {
        const { canOperate } = this.context.rights();
        this.panel.show([drive.serial, drive.number, schedule, canOperate], () =>
            schedule
                ? [h("p", {}, scheduleText(schedule)), canOperate ? this.form(drive, schedule) : null]
                : [emptyText("The schedule is not known.")],
        );
    }

    /** @param {DriveDetail} drive @param {Schedule} schedule */
    form(drive, schedule) {
        const kind = select("kind", "Repeat", kKinds, schedule.kind);
        const date = field("date", "Date", {
            type: "date",
            min: "2000-01-01",
            max: "2099-12-31",
            value: schedule.date,
        });
        const weekday = select(
            "weekday",
            "Weekday",
            kWeekdays.map(day => [day, capitalised(day)]),
            schedule.weekday ?? "sunday",
        );
        const time = field("time", "Time", { type: "time", step: 1, value: schedule.time ?? "03:00:00" });
        const form = h(
            "form",
            { class: "inline-form" },
            kind,
            date,
            weekday,
            time,
            h("button", { id: "schedule-save" }, "Save schedule"),
        );
        const arrange = () => {
            const chosen = input(form, "kind").value;
            date.hidden = chosen !== "once";
            weekday.hidden = chosen !== "weekly";
            time.hidden = chosen === "none";
            input(form, "date").required = chosen === "once";
            input(form, "time").required = chosen !== "none";
        };
        form.addEventListener("change", arrange);
        form.addEventListener("submit", event => {
            event.preventDefault();
            void this.save(drive, form);
        });
        arrange();
        return form;
    }

    /** @param {DriveDetail} drive @param {HTMLFormElement} form */
    async save(drive, form) {
        const value = (/** @type {string} */ name) => input(form, name).value;
        const kind = value("kind");
        const time = value("time").length === 5 ? `${value("time")}:00` : value("time");
        const schedule = {
            kind,
            ...(kind !== "none" && { time }),
            ...(kind === "once" && { date: value("date") }),
            ...(kind === "weekly" && { weekday: value("weekday") }),
        };
        await attempt(form.querySelector("button"), async () => {
            await sendToDrive("PUT", this.service, drive, "schedule", schedule);
            return `The schedule of drive ${drive.number} was saved.`;
        });
        this.changed();
    }
}
