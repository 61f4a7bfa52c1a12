// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { kLoginNeeded } from "./api.js";

const kSilenceMs = 40_000; // the server sends a comment every 15 s
const kFirstRetryMs = 1_000;
const kLongestRetryMs = 30_000;

/**
 * Returns the data lines of the complete events in `text`, and the incomplete rest.
 * @param {string} text @returns {{names: string[], rest: string}}
 */
export function parseEvents(text) {
    const blocks = text.split(/\r?\n\r?\n/);
    const rest = blocks.pop() ?? "";
    const names = blocks
        .flatMap(block => block.split(/\r?\n/))
        .filter(line => line.startsWith("data:"))
        .map(line => line.slice(5).trim());
    return { names, rest };
}

/**
 * The live stream of changed services. It is read by `fetch` and not by EventSource because only that sees the
 * server's comments, and so notices a connection that has gone silent. It is closed while the page is hidden.
 */
export class Stream {
    /**
     * @param {{changed: (service: string) => void, connected: () => void, lost: () => void}} listener
     */
    constructor(listener) {
        this.listener = listener;
        this.retryMs = kFirstRetryMs;
        this.timer = 0;
        /** @type {AbortController | null} */
        this.connection = null;
        this.isWanted = false;
        document.addEventListener("visibilitychange", () =>
            document.hidden ? this.disconnect() : this.connect(),
        );
        window.addEventListener("online", () => this.connect());
    }

    open() {
        this.isWanted = true;
        this.connect();
    }

    close() {
        this.isWanted = false;
        this.disconnect();
    }

    connect() {
        this.disconnect();
        if (this.isWanted && !document.hidden) void this.run();
    }

    disconnect() {
        clearTimeout(this.timer);
        this.connection?.abort();
        this.connection = null;
    }

    async run() {
        const connection = new AbortController();
        this.connection = connection;
        try {
            await this.receive(connection);
        } catch {
            /* what ended it makes no difference: it is opened again */
        }
        if (this.connection !== connection) return; // closed on purpose
        this.disconnect();
        this.listener.lost();
        this.timer = setTimeout(() => this.connect(), this.retryMs);
        this.retryMs = Math.min(2 * this.retryMs, kLongestRetryMs);
    }

    /** Reads until the connection ends. @param {AbortController} connection */
    async receive(connection) {
        const watch = this.watchSilence(connection);
        const response = await fetch("api/v1/stream", { signal: connection.signal, cache: "no-store" });
        if (response.status === 401) window.dispatchEvent(new Event(kLoginNeeded));
        if (!response.ok || !response.body) throw new Error("no stream");
        const reader = response.body.pipeThrough(new TextDecoderStream()).getReader();
        this.retryMs = kFirstRetryMs;
        this.listener.connected();
        let text = "";
        for (;;) {
            watch();
            const { value, done } = await reader.read();
            if (done) return;
            const { names, rest } = parseEvents(text + value);
            text = rest;
            new Set(names).forEach(name => this.listener.changed(name));
        }
    }

    /** Returns a function that postpones the end of a silent connection. @param {AbortController} connection */
    watchSilence(connection) {
        const restart = () => {
            clearTimeout(this.timer);
            this.timer = setTimeout(() => connection.abort(), kSilenceMs);
        };
        restart();
        return restart;
    }
}
