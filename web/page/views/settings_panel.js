// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { send, servicePath } from "../lib/api.js";
import { h } from "../lib/dom.js";
import { checkbox, field, input } from "../widgets/fields.js";
import { attempt } from "../widgets/notice.js";
import { Panel } from "../widgets/panel.js";

/** @typedef {import("../lib/dom.js").Child} Child */
/** @typedef {{key: string, label: string, hint?: string, kind: "text" | "number" | "seconds" | "switch" | "secret", min?: number, max?: number}} Setting */

const kLongestIntervalS = 360_000;

/** @type {Setting[]} */
const kGeneral = [
    { key: "wTemp", label: "Warning from (°C)", kind: "number", min: 1, max: 99 },
    { key: "cTemp", label: "Critical from (°C)", kind: "number", min: 1, max: 99 },
    {
        key: "smartPollIntervalMs",
        label: "Reading of the drives, every (s)",
        kind: "seconds",
        min: 1,
        max: kLongestIntervalS,
    },
    {
        key: "freeSpacePollIntervalMs",
        label: "Reading of the volumes, every (s)",
        kind: "seconds",
        min: 1,
        max: kLongestIntervalS,
    },
    { key: "logSysEvLog", label: "Alerts go to the system's event log", kind: "switch" },
    { key: "popupNotify", label: "Consoles may show alerts as messages", kind: "switch" },
];

/** @type {Setting[]} */
const kMail = [
    { key: "emailNotify", label: "Alerts go out by mail", kind: "switch" },
    { key: "smtpServer", label: "Mail server", kind: "text" },
    { key: "smtpPort", label: "Port", kind: "number", min: 1, max: 65535 },
    { key: "smtpFrom", label: "Sender", kind: "text" },
    { key: "smtpTo", label: "Recipient", kind: "text" },
    { key: "smtpSubj", label: "Subject", kind: "text" },
    { key: "smtpNeedAuth", label: "The mail server requires a login", kind: "switch" },
    { key: "smtpUser", label: "User name", kind: "text" },
    {
        key: "smtpPass",
        label: "Password",
        kind: "secret",
        hint: "Empty: unchanged. It is required again when the mail server or its port changes.",
    },
];

/** @param {Setting} setting @param {SettingValue} value */
function fieldOf({ key, label, hint, kind, min, max }, value) {
    switch (kind) {
        case "switch":
            return checkbox(key, label, value === true);
        case "secret":
            return field(
                key,
                label,
                { type: "password", autocomplete: "off", placeholder: value ? "set" : "not set" },
                hint,
            );
        case "text":
            return field(key, label, { type: "text", value, autocomplete: "off", spellcheck: "false" }, hint);
        default:
            return field(
                key,
                label,
                {
                    type: "number",
                    required: true,
                    min,
                    max,
                    value: kind === "seconds" ? Number(value) / 1000 : value,
                    step: kind === "seconds" ? "any" : 1,
                },
                hint,
            );
    }
}

/** @param {Setting} setting @param {HTMLFormElement} form @returns {SettingValue} */
function valueOf({ key, kind }, form) {
    const element = input(form, key);
    if (kind === "switch") return element instanceof HTMLInputElement && element.checked;
    if (kind === "text" || kind === "secret") return element.value;
    return kind === "seconds" ? Math.round(Number(element.value) * 1000) : Number(element.value);
}

/**
 * Returns what the form changes. A password counts when it is not empty.
 * @param {Setting[]} table @param {HTMLFormElement} form @param {Settings} settings
 */
function changesOf(table, form, settings) {
    /** @type {Settings} */
    const changes = {};
    for (const setting of table.filter(({ key }) => key in settings)) {
        const value = valueOf(setting, form);
        if (setting.kind === "secret" ? value !== "" : value !== settings[setting.key])
            changes[setting.key] = value;
    }
    return changes;
}

/** A form with some of a service's settings; without the right to change them it is read-only. */
export class SettingsPanel {
    /**
     * @param {import("../app.js").Context} context @param {string} service @param {() => void} changed
     * @param {string} [title] @param {Setting[]} [table]
     */
    constructor(context, service, changed, title = "Settings", table = kGeneral) {
        this.context = context;
        this.service = service;
        this.changed = changed;
        this.table = table;
        this.panel = new Panel(title);
    }

    /** @param {Settings} settings */
    show(settings) {
        const { canOperate } = this.context.rights();
        const known = this.table.filter(({ key }) => key in settings);
        this.panel.show([known.map(({ key }) => settings[key]), canOperate], () => [
            this.form(known, settings, canOperate),
        ]);
    }

    /** @param {Setting[]} known @param {Settings} settings @param {boolean} canOperate */
    form(known, settings, canOperate) {
        const form = h(
            "form",
            { class: "settings" },
            h(
                "fieldset",
                { disabled: !canOperate },
                h("legend", { class: "visually-hidden" }, this.panel.heading.textContent),
                ...known.map(setting => fieldOf(setting, settings[setting.key])),
            ),
            ...(canOperate
                ? this.buttons()
                : [h("p", { class: "quiet" }, "Operators can change these settings.")]),
        );
        form.addEventListener("submit", event => {
            event.preventDefault();
            void this.save(form, changesOf(known, form, settings));
        });
        return form;
    }

    /** @returns {Child[]} */
    buttons() {
        return [h("div", { class: "buttons" }, h("button", {}, "Save"))];
    }

    /** @param {HTMLFormElement} form @param {Settings} changes */
    async save(form, changes) {
        await attempt(form.querySelector(".buttons button"), async () => {
            if (!Object.keys(changes).length) return "Nothing was changed.";
            await send("PUT", `api/v1/${servicePath(this.service, "settings")}`, changes);
            return `The settings of ${this.service} were saved.`;
        });
        this.changed();
    }
}

/** @param {string[]} lines of both ends, with their line ends */
function transcriptText(lines) {
    return lines.map(line => line.trimEnd()).join("\n");
}

/** The mail settings with a test that shows the conversation with the mail server. */
export class MailPanel extends SettingsPanel {
    /** @param {import("../app.js").Context} context @param {string} service @param {() => void} changed */
    constructor(context, service, changed) {
        super(context, service, changed, "Mail", kMail);
        this.transcript = h("pre", {
            class: "transcript",
            hidden: true,
            tabindex: 0,
            "aria-label": "Transcript of the mail test",
        });
        this.panel.element.append(this.transcript);
    }

    /** @override @returns {Child[]} */
    buttons() {
        const test = h("button", { type: "button", class: "secondary", id: "mail-test" }, "Send a test mail");
        test.addEventListener("click", () => this.test(test));
        return [
            h("div", { class: "buttons" }, h("button", {}, "Save"), test),
            h("p", { class: "quiet" }, "The test uses the saved settings."),
        ];
    }

    /** @param {HTMLButtonElement} button */
    async test(button) {
        await attempt(button, async () => {
            const outcome = await send("POST", `api/v1/${servicePath(this.service, "mail-test")}`);
            this.transcript.textContent = transcriptText(outcome?.dialogue ?? []);
            this.transcript.hidden = !this.transcript.textContent;
            if (!outcome?.sent)
                throw new Error(`The test mail was not sent: ${outcome?.error ?? "the reason is not known"}`);
            return "The mail server accepted the test mail.";
        });
    }
}
