// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { read, servicePath } from "../lib/api.js";
import { fill, h } from "../lib/dom.js";
import { isOld } from "../lib/levels.js";
import { usesFahrenheit } from "../lib/preferences.js";
import { allReasons } from "../lib/reasons.js";
import { address } from "../lib/router.js";
import { Panel } from "../widgets/panel.js";
import { AttributePanel } from "./attribute_panel.js";
import { driveHeader, identityList, reasonList, volumeList } from "./drive_parts.js";
import { eventList } from "./events.js";
import { ScanPanel } from "./scan_panel.js";
import { SchedulePanel } from "./schedule_panel.js";
import { TemperaturePanel } from "./temperature_panel.js";

/**
 * The documents of a drive; one that could not be read is null.
 * @typedef {object} DriveDocuments
 * @property {DriveDetail | null} detail
 * @property {Scan[] | null} scans
 * @property {Schedule[] | null} schedule
 * @property {Volume[] | null} volumes
 * @property {Settings | null} settings
 * @property {Alerts | null} alerts
 * @property {HistoryEvent[] | null} events
 */

const kEventSpanMs = 90 * 86_400_000;
const kShortestPauseMs = 1_000;

/** @param {string} service @param {number} number @returns {Promise<{documents: DriveDocuments, staleSince: string | null, error: Error | null}>} */
async function readDocuments(service, number) {
    const from = new Date(Date.now() - kEventSpanMs).toISOString();
    const paths = {
        detail: `drives/${number}`,
        scans: "scans",
        schedule: "schedule",
        volumes: "volumes",
        settings: "settings",
        alerts: "alerts",
        events: `events?from=${encodeURIComponent(from)}&limit=500`,
    };
    const names = Object.keys(paths);
    const replies = await Promise.allSettled(
        Object.values(paths).map(path => read(servicePath(service, path))),
    );
    /** @type {any} */
    const documents = {};
    replies.forEach(
        (reply, index) => (documents[names[index]] = reply.status === "fulfilled" ? reply.value.data : null),
    );
    const detail = replies[0];
    return {
        documents,
        staleSince: detail.status === "fulfilled" && detail.value.isStale ? detail.value.lastAnswer : null,
        error: detail.status === "rejected" ? detail.reason : null,
    };
}

/** @param {string} service */
function breadcrumbs(service) {
    return h(
        "nav",
        { class: "breadcrumbs", "aria-label": "Breadcrumbs" },
        h("a", { href: address() }, "Overview"),
        " / ",
        h("a", { href: address("services", service) }, service),
    );
}

/** The page of a drive. @implements {View} */
export class DriveView {
    /** @param {import("../app.js").Context} context @param {string} service @param {number} number */
    constructor(context, service, number) {
        this.context = context;
        this.service = service;
        this.number = number;
        this.title = `Drive ${number} of ${service}`;
        this.isReading = false;
        this.isChanged = false;
        this.isClosed = false;
        /** @type {DriveDocuments | null} */
        this.documents = null;
        /** @type {string | null} */
        this.staleSince = null;
        this.header = new Panel("", "drive-header");
        this.reasons = new Panel("Why this level", "wide");
        this.temperature = new TemperaturePanel(service, number);
        this.attributes = new AttributePanel(service, number);
        this.scan = new ScanPanel(context, service, () => this.update(null));
        this.schedule = new SchedulePanel(context, service, () => this.update(null));
        this.volumes = new Panel("Volumes");
        this.identity = new Panel("Identity");
        this.events = new Panel("Events of this drive");
        this.message = h(
            "div",
            { class: "message" },
            h("p", { class: "loading", role: "status" }, "Loading …"),
        );
        this.headline = h("h1", { tabindex: -1 }, this.title);
        this.content = this.arrange();
        this.element = h("div", {}, breadcrumbs(service), this.headline, this.message, this.content);
        this.update(null);
    }

    arrange() {
        return h(
            "div",
            { class: "drive-columns", hidden: true },
            this.header.element,
            this.reasons.element,
            h(
                "div",
                { class: "column" },
                this.temperature.element,
                this.attributes.panel.element,
                this.events.element,
            ),
            h(
                "div",
                { class: "column" },
                this.scan.panel.element,
                this.schedule.panel.element,
                this.volumes.element,
                this.identity.element,
            ),
        );
    }

    /** Reads the documents again; changes that arrive meanwhile cost one more reading. @param {string[] | null} changed */
    async update(changed) {
        if (changed !== null && !changed.includes(this.service)) return;
        if (this.documents) this.show(this.documents); // the level or state may have changed in the overview
        if (this.isReading) {
            this.isChanged = true;
            return;
        }
        this.isReading = true;
        const { documents, staleSince, error } = await readDocuments(this.service, this.number);
        this.isReading = false;
        if (this.isClosed) return;
        if (documents.detail) {
            this.documents = documents;
            this.staleSince = staleSince;
            this.show(documents);
        } else {
            fill(
                this.message,
                h(
                    "p",
                    { class: "banner is-error", role: "alert" },
                    `This drive cannot be shown: ${error?.message}.`,
                ),
            );
        }
        if (this.isChanged) {
            this.isChanged = false;
            setTimeout(() => this.isClosed || this.update(null), kShortestPauseMs);
        }
    }

    /** @param {DriveDocuments} documents */
    show(documents) {
        const drive = /** @type {DriveDetail} */ (documents.detail);
        const settings = documents.settings ?? {};
        fill(this.message);
        this.content.hidden = false;
        this.headline.textContent = drive.model || this.title;
        this.showHeader(drive);
        this.showReasons(drive, settings, documents.alerts);
        this.temperature.show(drive, settings);
        this.attributes.show(drive);
        this.scan.show(
            drive,
            documents.scans?.find(scan => scan.drive === drive.number),
        );
        this.schedule.show(
            drive,
            documents.schedule?.find(entry => entry.drive === drive.number),
        );
        const volumes = (documents.volumes ?? []).filter(volume => volume.drive === drive.number);
        this.volumes.show(volumes, () => volumeList(volumes));
        this.identity.show(drive, () => [identityList(drive)]);
        const events = (documents.events ?? []).filter(
            event => event.serial === drive.serial && event.model === drive.model,
        );
        this.events.show(events, () => [eventList(events, false)]);
    }

    /** @param {DriveDetail} drive */
    showHeader(drive) {
        const service = this.context.store.service(this.service);
        const since = service && isOld(service) ? service.lastAnswer : this.staleSince;
        this.header.element.classList.toggle("is-old", since !== null);
        this.header.show([drive, service?.state, since, usesFahrenheit()], () =>
            driveHeader(drive, service, since),
        );
    }

    /** @param {DriveDetail} drive @param {Settings} settings @param {Alerts | null} alerts */
    showReasons(drive, settings, alerts) {
        const reasons = allReasons(drive, settings, alerts);
        const { canOperate } = this.context.rights();
        const changed = () => this.update(null);
        this.reasons.show([reasons, drive.level, drive.smartState, drive.monitored, canOperate], () => [
            reasonList(drive, reasons, this.service, canOperate, changed),
        ]);
    }

    close() {
        this.isClosed = true;
        this.temperature.close();
        this.attributes.close();
    }
}
