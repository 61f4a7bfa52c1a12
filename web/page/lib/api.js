// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

/** Requests to halvex-web. Paths are relative to the page, so it works below any base path. */

/** A request that failed: `status` is the HTTP status, 0 when there was no answer. */
export class ApiError extends Error {
    /** @param {number} status @param {string} message */
    constructor(status, message) {
        super(message);
        this.status = status;
    }
}

/** Raised on `window` when the server wants a login. */
export const kLoginNeeded = "halvex-login-needed";

/** @param {Response} response */
async function errorOf(response) {
    let text = `the server answered with status ${response.status}`;
    try {
        const body = await response.json();
        if (typeof body?.error === "string") text = body.error;
    } catch {
        /* a proxy may answer with a page of its own */
    }
    return new ApiError(response.status, text);
}

/** @param {string} path @param {RequestInit} options */
async function request(path, options) {
    let response;
    try {
        response = await fetch(path, { credentials: "same-origin", cache: "no-store", ...options });
    } catch {
        throw new ApiError(0, "halvex-web does not answer");
    }
    if (response.ok) return response;
    if (response.status === 401 && path.startsWith("api/")) window.dispatchEvent(new Event(kLoginNeeded));
    throw await errorOf(response);
}

/**
 * Reads a document.
 * @template T
 * @param {string} path below `api/v1/` @param {AbortSignal} [signal]
 * @returns {Promise<Reply<T>>}
 */
export async function read(path, signal) {
    const response = await request(`api/v1/${path}`, { signal });
    return {
        data: await response.json(),
        lastAnswer: response.headers.get("Halvex-Last-Answer"),
        isStale: response.headers.get("Halvex-Stale") === "1",
    };
}

/**
 * Sends a changing request and returns the document that it changed, null when the answer is empty.
 * @param {"POST" | "PUT" | "DELETE"} method @param {string} path @param {object} [body]
 */
export async function send(method, path, body = {}) {
    const response = await request(path, {
        method,
        headers: { "Content-Type": "application/json" },
        body: JSON.stringify(body),
    });
    const text = await response.text();
    try {
        return text ? JSON.parse(text) : null;
    } catch {
        return null;
    }
}

/** Returns the path of a service's document below `api/v1/`. @param {string} service @param {string} document */
export function servicePath(service, document) {
    return `services/${encodeURIComponent(service)}/${document}`;
}

/**
 * Sends a changing request about a drive. `serial` protects against a drive that was renumbered meanwhile.
 * @param {"POST" | "PUT" | "DELETE"} method @param {string} service @param {Drive} drive
 * @param {string} action @param {object} [body]
 */
export function sendToDrive(method, service, drive, action, body = {}) {
    const path = `api/v1/${servicePath(service, `drives/${drive.number}/${action}`)}`;
    if (method === "DELETE") return send(method, `${path}?serial=${encodeURIComponent(drive.serial)}`);
    return send(method, path, { serial: drive.serial, ...body });
}
