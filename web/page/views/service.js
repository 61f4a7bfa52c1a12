// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { read, send, servicePath } from "../lib/api.js";
import { fill, h } from "../lib/dom.js";
import { countText, kUnknown } from "../lib/format.js";
import { worstFirst } from "../lib/levels.js";
import { address } from "../lib/router.js";
import { age } from "../widgets/age.js";
import { stateBadge } from "../widgets/badge.js";
import { attempt } from "../widgets/notice.js";
import { emptyText, Panel } from "../widgets/panel.js";
import { DriveList } from "./drive_list.js";
import { channelList, findingList } from "./findings.js";
import { MailPanel, SettingsPanel } from "./settings_panel.js";

/** The page of a service: its state, drives, findings and settings. @implements {View} */
export class ServiceView {
    /** @param {import("../app.js").Context} context @param {string} name */
    constructor(context, name) {
        this.context = context;
        this.name = name;
        this.title = name;
        this.isClosed = false;
        const changed = () => this.update(null);
        this.state = new Panel("State");
        this.findings = new Panel("Findings");
        this.settings = new SettingsPanel(context, name, changed);
        this.mail = new MailPanel(context, name, changed);
        this.drives = new Panel("Drives", "wide");
        this.list = new DriveList();
        fill(this.drives.body, this.list.element);
        this.element = h(
            "div",
            {},
            h(
                "nav",
                { class: "breadcrumbs", "aria-label": "Breadcrumbs" },
                h("a", { href: address() }, "Overview"),
            ),
            h("h1", { tabindex: -1 }, name),
            h(
                "div",
                { class: "drive-columns is-even" },
                this.drives.element,
                h(
                    "div",
                    { class: "column" },
                    this.state.element,
                    this.findings.element,
                    this.settings.panel.element,
                ),
                h("div", { class: "column" }, this.mail.panel.element),
            ),
        );
        this.update(null);
    }

    /** @param {string[] | null} changed the names of services; null means any */
    async update(changed) {
        if (changed !== null && !changed.includes(this.name)) return;
        this.showState();
        if (!this.context.store.service(this.name)?.lastAnswer) {
            for (const panel of [this.settings.panel, this.mail.panel, this.findings])
                panel.show(null, () => [emptyText("Not known: the service has not answered yet.")]);
            return;
        }
        const [settings, alerts] = await Promise.allSettled([
            read(servicePath(this.name, "settings")),
            read(servicePath(this.name, "alerts")),
        ]);
        if (this.isClosed) return;
        if (settings.status === "fulfilled") {
            this.settings.show(settings.value.data);
            this.mail.show(settings.value.data);
        } else {
            this.settings.panel.show(settings.reason.message, () => [
                emptyText(`Not known: ${settings.reason.message}.`),
            ]);
        }
        if (alerts.status === "fulfilled") this.showFindings(alerts.value.data);
    }

    showState() {
        const { store } = this.context;
        const service = store.service(this.name);
        this.list.show(service ? worstFirst([service]) : [], store);
        this.drives.element.hidden = !service?.driveList.length;
        const { canOperate } = this.context.rights();
        const facts = service && { ...service, driveList: service.driveList.length };
        this.state.show([facts, canOperate, store.services === null], () => {
            if (!service)
                return [
                    store.services === null
                        ? emptyText("Loading …")
                        : emptyText(`There is no service '${this.name}'.`),
                ];
            return [
                h(
                    "dl",
                    { class: "identity" },
                    h("dt", {}, "State"),
                    h("dd", {}, stateBadge(service.state)),
                    service.error ? h("dt", {}, "Reason") : null,
                    service.error ? h("dd", { class: "error-text" }, service.error) : null,
                    h("dt", {}, "Last answer"),
                    h("dd", {}, age(service.lastAnswer)),
                    h("dt", {}, "Address"),
                    h("dd", {}, `${service.host}, port ${service.port}`),
                    h("dt", {}, "Host"),
                    h("dd", {}, service.hostName ?? kUnknown),
                    h("dt", {}, "Version"),
                    h("dd", {}, service.version ?? kUnknown),
                    h("dt", {}, "Drives"),
                    h("dd", {}, service.drives === null ? kUnknown : countText(service.drives, "drive")),
                ),
                canOperate ? this.actions() : null,
            ];
        });
    }

    actions() {
        const button = (
            /** @type {string} */ id,
            /** @type {string} */ name,
            /** @type {string} */ outcome,
        ) =>
            h(
                "button",
                {
                    type: "button",
                    class: "secondary",
                    id: `service-${id}`,
                    onclick: async (/** @type {Event} */ event) => {
                        await attempt(/** @type {HTMLButtonElement} */ (event.currentTarget), async () => {
                            await send("POST", `api/v1/${servicePath(this.name, id)}`);
                            return outcome;
                        });
                        void this.context.store.refresh();
                    },
                },
                name,
            );
        return h(
            "div",
            { class: "buttons" },
            button("refresh", "Read the drives now", "The drives were read."),
            button("detect", "Detect drives", "The detection of drives has started."),
        );
    }

    /** @param {Alerts} alerts */
    showFindings(alerts) {
        const { canOperate } = this.context.rights();
        this.findings.show([alerts, canOperate], () =>
            alerts.supported === false
                ? [emptyText("This service does not keep findings.")]
                : [
                      findingList(this.name, alerts.findings ?? [], canOperate, () => this.update(null)),
                      h("h3", {}, "Delivery of alerts"),
                      channelList(alerts.channels ?? []),
                  ],
        );
    }

    close() {
        this.isClosed = true;
        this.list.close();
    }
}
