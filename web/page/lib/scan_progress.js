// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

/** What a surface scan's status means for the disk. Sectors have 512 bytes here, whatever the drive's own have. */

export const kSectorBytes = 512;
export const kCells = 1000;

/** @typedef {"untouched" | "read" | "bad" | "current"} CellState */
/** @typedef {{sector: number, timeMs: number}} Sample */

/** @param {Drive} drive */
export function sectorsOf(drive) {
    return Math.max(1, Math.floor(Number(drive.capacityBytes) / kSectorBytes));
}

/** Returns whether the drive was ever scanned. @param {Scan} scan */
export function hasRun(scan) {
    return scan.percent !== undefined;
}

/** @param {Scan | undefined} scan */
export function stateText(scan) {
    if (scan?.running) return `Scanning, ${scan.percent ?? 0} %`;
    if (scan?.failed) return "Failed: the drive could not be opened";
    if (!scan || !hasRun(scan)) return "Never scanned";
    return scan.percent === 100 ? "Complete" : `Stopped at ${scan.percent} %`;
}

/**
 * Returns the state of each cell of the disk's map: one thousandth of its sectors.
 * @param {Scan | undefined} scan @param {number} sectors @returns {CellState[]}
 */
export function cells(scan, sectors) {
    /** @type {CellState[]} */
    const states = new Array(kCells).fill("untouched");
    if (!scan || !hasRun(scan)) return states;
    const cellOf = (/** @type {LargeNumber} */ sector) =>
        Math.max(0, Math.min(kCells - 1, Math.floor((Number(sector) * kCells) / sectors)));
    const current = cellOf(scan.currentSector ?? 0);
    states.fill("read", cellOf(scan.firstSector ?? 0), current + 1);
    if (scan.running) states[current] = "current";
    for (const [first, last] of scan.badSectors) states.fill("bad", cellOf(first), cellOf(last) + 1);
    return states;
}

/**
 * Returns bytes per second: between the two newest samples, else since the scan started; null while unknown.
 * @param {Scan} scan @param {Sample[]} samples oldest first @param {number} nowMs
 */
export function bytesPerSecond(scan, samples, nowMs) {
    const [a, b] = samples.slice(-2);
    if (b && b.timeMs > a.timeMs)
        return Math.max(0, ((b.sector - a.sector) * kSectorBytes * 1000) / (b.timeMs - a.timeMs));
    const elapsedMs = nowMs - Date.parse(scan.started ?? "");
    const sectors = Number(scan.currentSector) - Number(scan.firstSector);
    return elapsedMs > 0 && sectors > 0 ? (sectors * kSectorBytes * 1000) / elapsedMs : null;
}

/**
 * Returns the seconds until the scan ends; null while unknown. The status has no last sector, so the percentage shows
 * how much is left.
 * @param {Scan} scan @param {number | null} rate bytes per second
 */
export function secondsLeft(scan, rate) {
    const done = (Number(scan.currentSector) - Number(scan.firstSector)) * kSectorBytes;
    if (!rate || !scan.percent || done <= 0) return null;
    return (done * (100 - scan.percent)) / scan.percent / rate;
}
