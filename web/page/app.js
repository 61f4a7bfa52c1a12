// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { kLoginNeeded, read, send } from "./lib/api.js";
import { byId, fill, h } from "./lib/dom.js";
import { clockText, degreeUnit, zoneText } from "./lib/format.js";
import { setFahrenheit, usesFahrenheit } from "./lib/preferences.js";
import { parseAddress } from "./lib/router.js";
import { Store } from "./lib/store.js";
import { Stream } from "./lib/stream.js";
import { refreshAges } from "./widgets/age.js";
import { emptyText } from "./widgets/panel.js";
import { attempt } from "./widgets/notice.js";
import { DriveView } from "./views/drive.js";
import { EventsView } from "./views/events.js";
import { FormerView } from "./views/former.js";
import { setUpLogin, showLogin } from "./views/login.js";
import { Overview } from "./views/overview.js";
import { ServiceView } from "./views/service.js";

/** What views share. @typedef {{store: Store, rights: () => {canOperate: boolean}}} Context */

/** @type {Session} */
let session = { name: null, role: null, needsLogin: false };
/** @type {View | null} */
let view = null;
let isLost = false;

const store = new Store(services => {
    view?.update(services);
    showConnection();
});
const stream = new Stream({
    changed: service => store.noteChange(service),
    connected: () => {
        isLost = false;
        void store.refresh(); // nothing was announced while there was no stream
    },
    lost: () => {
        isLost = true;
        showConnection();
    },
});

/** @type {Context} */
const context = { store, rights: () => ({ canOperate: session.role === "operator" }) };

/** Returns the view of an address. @param {string[]} parts @returns {View} */
function viewOf(parts) {
    const [first, service, second, number] = parts;
    if (!first) return new Overview(context);
    if (first === "services" && second === "drives" && /^\d{1,3}$/.test(number ?? ""))
        return new DriveView(context, service, Number(number));
    if (first === "services" && service && !second) return new ServiceView(context, service);
    if (first === "events") return new EventsView();
    if (first === "former") return new FormerView();
    return {
        title: "Not found",
        element: h("div", {}, h("h1", { tabindex: -1 }, "Not found"), emptyText("There is no such page.")),
        update() {},
    };
}

function showView() {
    view?.close?.();
    view = viewOf(parseAddress(location.hash));
    fill(byId("view"), view.element);
    document.title = view.title === "Overview" ? "Halvex" : `${view.title} – Halvex`;
    for (const link of byId("navigation").querySelectorAll("a"))
        link.setAttribute("aria-current", link.hash === (location.hash || "#/") ? "page" : "false");
    window.scrollTo(0, 0);
}

/** Shows whether the values are live. They are when the stream is open and the last request was answered. */
function showConnection() {
    const hasFailed = isLost || (store.error !== null && store.error.status !== 401);
    const since = store.lastAnswer
        ? ` The values are those of ${clockText(store.lastAnswer.toISOString())}.`
        : "";
    const banner = byId("connection");
    const text = hasFailed ? `Connection to halvex-web lost; trying again.${since}` : "";
    if (banner.textContent !== text) banner.textContent = text;
    banner.hidden = !hasFailed;
    document.body.classList.toggle("is-lost", hasFailed);
    const state = byId("live");
    const word = hasFailed ? "Offline" : store.lastAnswer ? "Live" : "Connecting";
    if (state.textContent !== word) state.textContent = word;
    state.className = `live is-${word.toLowerCase()}`;
}

function showSession() {
    byId("user").textContent = session.name ? `${session.name} (${session.role})` : "";
    byId("logout").hidden = session.name === null;
}

/** Asks who is logged in and shows the login form or the page. */
async function start() {
    try {
        session = /** @type {Reply<Session>} */ (await read("session")).data;
    } catch {
        isLost = true;
        showConnection();
        setTimeout(start, 5_000);
        return;
    }
    isLost = false;
    showSession();
    const isStranger = session.needsLogin && session.name === null;
    showLogin(isStranger);
    if (isStranger) {
        askForLogin();
        return;
    }
    showView();
    stream.open();
}

function askForLogin() {
    stream.close();
    view?.close?.();
    view = null;
    store.services = null;
    fill(byId("view"));
    session = { name: null, role: null, needsLogin: true };
    showSession();
    showLogin(true);
}

function setUpControls() {
    const unit = byId("unit");
    const showUnit = () => {
        unit.textContent = degreeUnit();
        unit.setAttribute("aria-label", `Temperatures in ${degreeUnit()}; change the unit`);
    };
    unit.addEventListener("click", () => {
        setFahrenheit(!usesFahrenheit());
        showUnit();
        view?.update(null);
    });
    showUnit();
    byId("logout").addEventListener("click", async event => {
        if (
            await attempt(/** @type {HTMLButtonElement} */ (event.currentTarget), async () => {
                await send("POST", "logout");
                return "You are logged out.";
            })
        )
            askForLogin();
    });
    byId("skip").addEventListener("click", event => {
        event.preventDefault(); // the fragment of an address names a view
        byId("view").focus();
    });
    byId("zone").textContent = `Times are shown in ${zoneText()}.`;
}

window.addEventListener("hashchange", () => {
    if (byId("view").hidden) return;
    showView();
    byId("view").querySelector("h1")?.focus();
});
window.addEventListener(kLoginNeeded, askForLogin);
setUpLogin(() => void start());
setUpControls();
refreshAges();
void start();
