// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

/** Addresses within the page. They live behind `#`, so the server has one page and any base path works. */

/** Returns the address of a view. @param {(string | number)[]} parts */
export function address(...parts) {
    return "#/" + parts.map(part => encodeURIComponent(part)).join("/");
}

/** @param {string} service @param {number} drive */
export function driveAddress(service, drive) {
    return address("services", service, "drives", drive);
}

/** Returns the decoded parts of an address; a part that cannot be decoded stays as it is. @param {string} hash */
export function parseAddress(hash) {
    return hash
        .replace(/^#\/?/, "")
        .split("/")
        .filter(Boolean)
        .map(part => {
            try {
                return decodeURIComponent(part);
            } catch {
                return part;
            }
        });
}
