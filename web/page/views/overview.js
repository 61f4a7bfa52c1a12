// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { fill, h } from "../lib/dom.js";
import { countText, numberText } from "../lib/format.js";
import { countLevels, isOld, kLevelNames, kLevels, levelWord, worstFirst } from "../lib/levels.js";
import { address } from "../lib/router.js";
import { age } from "../widgets/age.js";
import { sign, stateBadge } from "../widgets/badge.js";
import { emptyText, Panel } from "../widgets/panel.js";
import { DriveList } from "./drive_list.js";

/** @typedef {import("../lib/levels.js").Entry} Entry */
/** @typedef {import("../lib/levels.js").LevelWord} LevelWord */

const kServicesShown = 6; // more of them are folded away while all is well with them

/** The filter outlives the view, so that it is still set on return from a drive. */
/** @type {{text: string, level: LevelWord | null}} */
const filter = { text: "", level: null };

/** @param {Entry} entry @param {typeof filter} wanted */
export function matches({ service, drive }, { text, level }) {
    if (level && levelWord(drive.level) !== level) return false;
    const haystack = [drive.model, drive.serial, drive.firmware, service.name, service.hostName]
        .join("\n")
        .toLowerCase();
    return text
        .toLowerCase()
        .split(/\s+/)
        .every(word => haystack.includes(word));
}

/** @param {Service} service */
function serviceCard(service) {
    return h(
        "li",
        { class: `service-card is-${service.state}` },
        h(
            "div",
            { class: "service-head" },
            h("a", { href: address("services", service.name) }, service.name),
            stateBadge(service.state),
        ),
        h(
            "p",
            { class: "quiet" },
            service.hostName ?? `${service.host}:${service.port}`,
            service.drives === null ? null : ` · ${countText(service.drives, "drive")}`,
        ),
        h("p", { class: "quiet" }, "Last answer ", age(service.lastAnswer)),
        service.error ? h("p", { class: "error-text" }, service.error) : null,
    );
}

/** @param {OverviewService[]} services */
function serviceCards(services) {
    const list = (/** @type {Service[]} */ some) =>
        h("ul", { class: "service-cards" }, ...some.map(serviceCard));
    if (services.length <= kServicesShown) return [list(services)];
    const troubled = services.filter(isOld);
    const calm = services.filter(service => !isOld(service));
    return [
        troubled.length ? list(troubled) : null,
        h("details", {}, h("summary", {}, `${countText(calm.length, "service")} ready`), list(calm)),
    ];
}

/** The overview of all drives of all services. @implements {View} */
export class Overview {
    /** @param {import("../app.js").Context} context */
    constructor({ store }) {
        this.title = "Overview";
        this.store = store;
        this.signature = ""; // of the counts that are shown
        this.counts = h("div", { class: "tiles", role: "group", "aria-label": "Filter by level" });
        this.search = h("input", {
            type: "search",
            value: filter.text,
            placeholder: "Model, serial or service",
            "aria-label": "Filter drives by text",
            oninput: () => this.filterBy({ text: this.search.value }),
        });
        this.shown = h("p", { class: "quiet", role: "status" });
        this.list = new DriveList();
        this.services = new Panel("Services");
        this.drives = new Panel("Drives");
        fill(this.drives.body, h("div", { class: "toolbar" }, this.search, this.shown), this.list.element);
        this.message = h("div", { class: "message" });
        this.element = h(
            "div",
            { class: "overview" },
            h("h1", { tabindex: -1, class: "visually-hidden" }, "Overview"),
            this.message,
            this.counts,
            this.services.element,
            this.drives.element,
        );
        this.update();
    }

    /** @param {Partial<typeof filter>} change */
    filterBy(change) {
        Object.assign(filter, change);
        this.update();
    }

    update() {
        const services = this.store.services;
        this.drives.element.hidden = this.services.element.hidden = this.counts.hidden = !services?.length;
        this.showMessage();
        if (!services) return;
        const entries = worstFirst(services);
        this.showCounts(entries);
        this.services.show(
            services.map(({ driveList, ...service }) => service),
            () => serviceCards(services),
        );
        const wanted = entries.filter(entry => matches(entry, filter));
        fill(
            this.shown,
            entries.length === wanted.length
                ? countText(entries.length, "drive")
                : `${numberText(wanted.length)} of ${countText(entries.length, "drive")}`,
        );
        this.list.show(wanted, this.store);
        this.drives.element.hidden ||= !entries.length;
        this.counts.hidden ||= !entries.length;
    }

    showMessage() {
        const { services, error } = this.store;
        if (services === null)
            fill(
                this.message,
                error
                    ? h("p", { class: "banner is-error", role: "alert" }, `No data: ${error.message}.`)
                    : h("p", { class: "loading", role: "status" }, "Loading …"),
            );
        else if (!services.length)
            fill(
                this.message,
                emptyText(
                    "No services are configured. Start halvex-web with --service or add services to its configuration file.",
                ),
            );
        else if (services.every(service => !service.driveList.length))
            fill(
                this.message,
                emptyText("There are no drives to show: see the state of each service below."),
            );
        else fill(this.message);
    }

    /** @param {Entry[]} entries */
    showCounts(entries) {
        const counts = countLevels(entries);
        const signature = JSON.stringify([counts, filter.level]);
        if (this.signature === signature) return;
        this.signature = signature;
        const focused = document.activeElement?.id;
        fill(
            this.counts,
            ...kLevels.map(level =>
                h(
                    "button",
                    {
                        type: "button",
                        id: `count-${level}`,
                        class: `tile is-${level}`,
                        "aria-pressed": filter.level === level,
                        onclick: () => this.filterBy({ level: filter.level === level ? null : level }),
                    },
                    h("span", { class: "tile-value" }, numberText(counts[level])),
                    h("span", { class: "tile-name" }, sign(level), kLevelNames[level]),
                ),
            ),
        );
        if (focused?.startsWith("count-")) document.getElementById(focused)?.focus();
    }

    close() {
        this.list.close();
    }
}
