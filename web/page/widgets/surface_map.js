// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

import { fill, h, svg } from "../lib/dom.js";
import { countText, numberText, sizeText } from "../lib/format.js";
import { cells, kCells, kSectorBytes, sectorsOf } from "../lib/scan_progress.js";

const kPerRow = 50;

/** @type {[import("../lib/scan_progress.js").CellState, string][]} */
const kLegend = [
    ["untouched", "Not read"],
    ["read", "Read"],
    ["bad", "Bad sectors"],
    ["current", "Position of the scan"],
];

/** Returns the squares of all cells in `state` as one path. @param {string[]} states @param {string} state */
function squares(states, state) {
    let path = "";
    states.forEach((candidate, index) => {
        if (candidate === state)
            path += `M${(index % kPerRow) + 0.06} ${Math.floor(index / kPerRow) + 0.06}h.88v.88h-.88z`;
    });
    return path;
}

/** @param {string[]} states @param {Scan | undefined} scan */
function label(states, scan) {
    const count = (/** @type {string} */ state) => states.filter(candidate => candidate === state).length;
    const read = kCells - count("untouched");
    return (
        `Map of the disk in ${kCells} cells: ${read} read, ${count("bad")} with bad sectors` +
        ` (${countText(scan?.badSectors.length ?? 0, "bad range")}).`
    );
}

/** Returns the map of a disk's surface with its legend. @param {Drive} drive @param {Scan | undefined} scan */
export function surfaceMap(drive, scan) {
    const states = cells(scan, sectorsOf(drive));
    const paths = kLegend.map(([state]) =>
        svg("path", { class: `cell-${state}`, d: squares(states, state) }),
    );
    const map = svg(
        "svg",
        {
            class: "surface-map",
            viewBox: `0 0 ${kPerRow} ${kCells / kPerRow}`,
            role: "img",
            "aria-label": label(states, scan),
        },
        ...paths,
    );
    const readout = h("p", { class: "quiet" });
    const idle = `One cell is ${sizeText(Number(drive.capacityBytes) / kCells)}.`;
    fill(readout, idle);
    map.addEventListener("pointermove", event => fill(readout, cellText(drive, map, event, states) ?? idle));
    map.addEventListener("pointerleave", () => fill(readout, idle));
    const legend = h(
        "ul",
        { class: "legend" },
        ...kLegend.map(([state, name]) =>
            h("li", {}, h("span", { class: `key cell-${state}`, "aria-hidden": "true" }), name),
        ),
    );
    return h("div", {}, map, legend, readout);
}

/** @param {Drive} drive @param {SVGElement} map @param {Event} event @param {string[]} states */
function cellText(drive, map, event, states) {
    const { clientX, clientY } = /** @type {PointerEvent} */ (event);
    const box = map.getBoundingClientRect();
    const column = Math.floor(((clientX - box.left) / box.width) * kPerRow);
    const line = Math.floor(((clientY - box.top) / box.height) * (kCells / kPerRow));
    const index = line * kPerRow + column;
    if (column < 0 || column >= kPerRow || index < 0 || index >= kCells) return null;
    const perCell = sectorsOf(drive) / kCells;
    const name = kLegend.find(([state]) => state === states[index])?.[1];
    return (
        `Sectors ${numberText(Math.floor(index * perCell))} to ${numberText(Math.floor((index + 1) * perCell) - 1)}` +
        ` (from ${sizeText(index * perCell * kSectorBytes)}): ${name}`
    );
}
