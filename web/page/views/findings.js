// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { send, servicePath } from "../lib/api.js";
import { h } from "../lib/dom.js";
import { countText, shortTimeText } from "../lib/format.js";
import { findingText } from "../lib/reasons.js";
import { driveAddress } from "../lib/router.js";
import { sign } from "../widgets/badge.js";
import { attempt } from "../widgets/notice.js";
import { emptyText } from "../widgets/panel.js";

/**
 * Returns a button that acknowledges a finding.
 * @param {string} service @param {Finding} finding @param {() => void} changed runs afterwards
 */
export function acknowledgeButton(service, finding, changed) {
    const button = h("button", { type: "button", class: "secondary" }, "Acknowledge");
    button.addEventListener("click", async () => {
        await attempt(button, async () => {
            await send("POST", `api/v1/${servicePath(service, "acknowledge")}`, {
                serial: finding.serial,
                kind: finding.kind,
                id: finding.id,
            });
            return "The finding is acknowledged: it is reported again when it becomes worse.";
        });
        changed();
    });
    return button;
}

/**
 * Returns the findings of a service.
 * @param {string} service @param {Finding[]} findings @param {boolean} canOperate @param {() => void} changed
 */
export function findingList(service, findings, canOperate, changed) {
    if (!findings.length) return emptyText("There are no findings.");
    return h(
        "ul",
        { class: "reasons" },
        ...findings.map(finding => {
            const name = `${finding.model} (${finding.serial})`;
            return h(
                "li",
                { class: `is-${finding.severity}` },
                sign(finding.severity),
                h(
                    "strong",
                    {},
                    finding.number === null
                        ? name
                        : h("a", { href: driveAddress(service, finding.number) }, name),
                ),
                h("span", {}, findingText(finding)),
                h(
                    "span",
                    { class: "quiet" },
                    `Since ${shortTimeText(finding.since)}${finding.acknowledged ? "; acknowledged" : ""}`,
                ),
                canOperate && !finding.acknowledged ? acknowledgeButton(service, finding, changed) : null,
            );
        }),
    );
}

/** Returns the state of the ways on which alerts go out. @param {Channel[]} channels */
export function channelList(channels) {
    const names = { events: "Event log", mail: "Mail", webhook: "Webhook", program: "Program" };
    return h(
        "ul",
        { class: "channels" },
        ...channels.map(channel =>
            h(
                "li",
                {},
                h("strong", {}, names[/** @type {keyof typeof names} */ (channel.name)] ?? channel.name),
                h("span", { class: "quiet" }, channel.on ? "on" : "off"),
                channel.lastSuccess
                    ? h("span", {}, `Last success ${shortTimeText(channel.lastSuccess)}`)
                    : null,
                channel.lastFailure
                    ? h(
                          "span",
                          { class: "error-text" },
                          `Last failure ${shortTimeText(channel.lastFailure)}: ${channel.reason ?? ""}`,
                      )
                    : null,
                channel.pending
                    ? h("span", {}, `${countText(channel.pending, "entry", "entries")} waiting`)
                    : null,
            ),
        ),
    );
}
