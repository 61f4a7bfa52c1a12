#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Halvex developers
"""Prints the table of the README from the results in a folder.

usage: table.py FOLDER

NAME.json is what a Google Benchmark program reports; NAME.rows holds rows that a script made itself. Rows of benchmarks
that did not run are left out.
"""

import json
import pathlib
import re
import sys

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}

SCALES = {
    "s": ((1, "s"), (1e-3, "ms"), (1e-6, "µs")),
    "B": ((1e6, "MB"), (1e3, "kB")),
    "B/s": ((1e6, "MB/s"), (1e3, "kB/s")),
}


def significant(number, digits):
    """Returns `number` with so many digits, or all those before the point."""
    text = f"{number:.{digits}g}"
    return f"{number:.0f}" if "e" in text else text


def quantity(value, unit):
    factor, name = next(((f, n) for f, n in SCALES[unit] if value >= f), SCALES[unit][-1])
    return f"{significant(value / factor, 3)} {name}"


def row(what, ours, unit, compared="", other=None):
    """Returns a row; `ours` and `other` are in seconds, bytes or bytes per second."""
    if other is None:
        return f"| {what} | {quantity(ours, unit)} | | |"
    ratio = ours / other
    text = f"{ratio:.2f}" if ratio < 2 else significant(ratio, 2)
    return f"| {what} | {quantity(ours, unit)} | {compared}: {quantity(other, unit)} | {text} |"


class Results:
    """All benchmarks of the run by name, without the endings that their options add."""

    def __init__(self, folder):
        self.found = {}
        for file in sorted(folder.glob("*.json")):
            for item in json.loads(file.read_text())["benchmarks"]:
                item["is_elapsed"] = item["name"].endswith(("/real_time", "/manual_time"))
                self.found[re.sub(r"/(real_time|manual_time|iterations:\d+)", "", item["name"])] = item

    def seconds(self, name):
        item = self.found[name]
        return item["real_time" if item["is_elapsed"] else "cpu_time"] * NANOSECONDS[item["time_unit"]] / 1e9

    def counter(self, name, key):
        return self.found[name][key]


def times(what, ours, compared, other):
    """Returns what makes the row of two durations."""
    return lambda results: row(what, results.seconds(ours), "s", compared, results.seconds(other))


SCAN = "whole surface beside dd iflag=direct/loop:0/block:65536"
MEMORY = "resident memory when idle"
DETECTION = "99 drives of 20 ms a request beside one"

ROWS = (
    times("scrambling 100 kB", "scrambling/100000", "a character at a time, as the rule reads", "scramblingPlainly/100000"),
    times("unscrambling 100 kB", "unscrambling/100000", "the same", "unscramblingPlainly/100000"),
    times("text of every attribute of 99 drives", "allSmart", "filling placeholders", "allSmartByPlaceholders"),
    times("the same, request to reply over TCP (0.36 MB)", "ALLSMARTINFO of 99 drives",
          "the same bytes from a bare `QTcpServer`", "the same bytes from a bare QTcpServer"),
    times("last day of ten drives in a log of three years", "history/lastDayOf42MB", "reading the file's 42 MB", "readFile"),
    times("that whole log to a console (112 MB)", "whole file through the service",
          "`cat \\| base64 \\| xxd -p`", "cat | base64 | xxd -p"),
    lambda r: row("the longest wait of another console meanwhile",
                  r.counter("another console meanwhile", "longest_wait_ms") / 1e3, "s"),
    lambda r: row("surface scan, blocks of 64 KiB", r.counter(SCAN, "scan_MB/s") * 1e6, "B/s",
                  "`dd iflag=direct`", r.counter(SCAN, "dd_MB/s") * 1e6),
    times("`ALLSMARTINFO` while eight scans run (median)", "median of 500 ALLSMARTINFO/eight scans:1",
          "without scans", "median of 500 ALLSMARTINFO/eight scans:0"),
    lambda r: row("detection of 99 drives that take 20 ms a request", r.seconds(DETECTION), "s",
                  "of one such drive", r.counter(DETECTION, "one_ms") / 1e3),
    times("start to greeting, 8 drives", "start to greeting with 8 drives",
          "start to connection of a bare `QTcpServer`", "start to connection of a bare QTcpServer"),
    lambda r: row("resident memory when idle, 8 drives", r.counter(MEMORY, "service_KiB") * 1024, "B",
                  "a bare `QTcpServer`", r.counter(MEMORY, "bare_KiB") * 1024),
)


def main():
    folder = pathlib.Path(sys.argv[1])
    results = Results(folder)
    print("| what | ours | compared with | ratio |\n|---|---|---|---|")
    for make in ROWS:
        try:
            print(make(results))
        except KeyError:  # this benchmark did not run
            pass
    for file in sorted(folder.glob("*.rows")):
        print(file.read_text(), end="")


if __name__ == "__main__":
    main()
