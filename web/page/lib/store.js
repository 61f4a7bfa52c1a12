// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { ApiError, read, servicePath } from "./api.js";

const kShortestPauseMs = 1_000;
const kPauseFactor = 5; // a slow server is read for at most a sixth of the time
const kScanRequests = 4; // at a time: the browser keeps six connections to one server

/**
 * The overview of all services, shared by the views. Changes of many services within a moment cost one request.
 */
export class Store {
    /** @param {(services: string[] | null) => void} changed runs after a change of these services; null means any */
    constructor(changed) {
        this.changed = changed;
        /** @type {OverviewService[] | null} null before the first answer */
        this.services = null;
        /** @type {ApiError | null} why the last request failed */
        this.error = null;
        /** Time of the last answer of halvex-web. @type {Date | null} */
        this.lastAnswer = null;
        /** @type {Map<string, Map<number, Scan>>} scans by service and drive */
        this.scans = new Map();
        /** @type {Set<string>} services that changed and were not read since */
        this.pending = new Set();
        this.needsAll = false;
        this.isReading = false;
        this.timer = 0;
    }

    /** Notes that `service` changed and reads it soon. @param {string} service */
    noteChange(service) {
        this.pending.add(service);
        this.schedule(kShortestPauseMs);
    }

    /** Reads everything, now or after the reading that is in progress. */
    async refresh() {
        this.needsAll = true;
        clearTimeout(this.timer);
        this.timer = 0;
        if (!this.isReading) await this.readChanged();
    }

    /** @param {number} pauseMs */
    schedule(pauseMs) {
        if (!this.isReading) this.timer ||= setTimeout(() => this.readChanged(), pauseMs);
    }

    /** Reads the overview and the scans of the services that changed. The pause after it grows with the time it took. */
    async readChanged() {
        this.timer = 0;
        this.isReading = true;
        const started = performance.now();
        const names = this.needsAll ? [] : [...this.pending];
        this.needsAll = false;
        this.pending.clear();
        await this.readOverview(names);
        await this.readScans(names.length ? names : (this.services ?? []).map(service => service.name));
        this.isReading = false;
        if (this.needsAll || this.pending.size)
            this.schedule(Math.max(kShortestPauseMs, kPauseFactor * (performance.now() - started)));
    }

    /** @param {string[]} names */
    async readOverview(names) {
        try {
            /** @type {Reply<OverviewService[]>} */
            const reply = await read("overview");
            this.services = reply.data;
            this.lastAnswer = new Date();
            this.error = null;
        } catch (error) {
            this.error = error instanceof ApiError ? error : new ApiError(0, String(error));
        }
        this.changed(names.length ? names : null);
    }

    /** @param {string[]} names */
    async readScans(names) {
        const waiting = names.filter(name => this.service(name)?.driveList.length);
        let isNew = false;
        const work = async () => {
            for (let name = waiting.pop(); name !== undefined; name = waiting.pop())
                isNew = (await this.readScansOf(name)) || isNew;
        };
        await Promise.all(Array.from({ length: kScanRequests }, work));
        if (isNew) this.changed(null);
    }

    /** Returns whether the scans of `name` differ from before. @param {string} name */
    async readScansOf(name) {
        try {
            /** @type {Reply<Scan[]>} */
            const reply = await read(servicePath(name, "scans"));
            const before = JSON.stringify([...(this.scans.get(name)?.values() ?? [])]);
            this.scans.set(name, new Map(reply.data.map(scan => [scan.drive, scan])));
            return before !== JSON.stringify(reply.data);
        } catch {
            return false; // the overview shows the drives all the same
        }
    }

    /** @param {string} name */
    service(name) {
        return this.services?.find(service => service.name === name);
    }

    /** @param {string} service @param {number} drive */
    scan(service, drive) {
        return this.scans.get(service)?.get(drive);
    }
}
