# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Halvex developers
"""The page's rules, which are functions over values: they run in the browser, on files that any server could send."""

import functools
import http.server
import threading
import unittest

from browser import Browser
from programs import ROOT

UNTOUCHED, READ, BAD, CURRENT = "untouched", "read", "bad", "current"


class Files(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        pass


def setUpModule():
    global browser, server
    handler = functools.partial(Files, directory=ROOT / "web/page")
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    browser = Browser(800)
    browser.driver.get(f"http://127.0.0.1:{server.server_port}/icon.svg")


def tearDownModule():
    browser.close()
    server.shutdown()
    server.server_close()


class Rules(unittest.TestCase):
    def check(self, module, function, rows):
        for name, arguments, expected in rows:
            with self.subTest(name):
                self.assertEqual(browser.call(module, function, *arguments), expected)

    def test_sizes(self):
        self.check("lib/format.js", "sizeText", [
            ("bytes", [999], "999 B"),
            ("three digits round up into the next unit", [999_500], "1.00 MB"),
            ("a drive's size", [1_000_204_886_016], "1.00 TB"),
            ("above 2^53, as text", ["18000207937536000000"], "18.0 EB"),
        ])

    def test_power_on_time(self):
        self.check("lib/format.js", "powerOnText", [
            ("unit not known", [{"powerOnHours": None}], "–"),
            ("hours", [{"powerOnHours": 47}], "47 h"),
            ("days", [{"powerOnHours": 48}], "2 days"),
            ("years", [{"powerOnHours": 20000}], "2.3 years"),
        ])

    def test_cells_of_a_scan(self):
        scan = {"drive": 0, "running": True, "failed": False, "percent": 30, "firstSector": 100, "currentSector": 399}
        cases = [
            ("running in a range", scan | {"badSectors": []}, {100: READ, 399: CURRENT, 400: UNTOUCHED, 99: UNTOUCHED}),
            ("a bad range covers its last cell", scan | {"badSectors": [[200, 201]]}, {199: READ, 200: BAD, 201: BAD, 202: READ}),
            ("a range beyond the drive", scan | {"badSectors": [[998, 5000]]}, {997: UNTOUCHED, 999: BAD}),
            ("never scanned", {"drive": 0, "running": False, "badSectors": []}, {0: UNTOUCHED, 999: UNTOUCHED}),
        ]
        for name, scan, expected in cases:
            with self.subTest(name):
                cells = browser.call("lib/scan_progress.js", "cells", scan, 1000)
                self.assertEqual(len(cells), 1000)
                self.assertEqual({place: cells[place] for place in expected}, expected)

    def test_speed_and_time_left(self):
        scan = {"percent": 25, "firstSector": 0, "currentSector": 2000, "started": "2026-11-15T00:00:00Z"}
        start_ms = 1_794_700_800_000
        self.check("lib/scan_progress.js", "bytesPerSecond", [
            ("two samples", [scan, [{"sector": 0, "timeMs": 0}, {"sector": 2000, "timeMs": 1000}], 5000], 1_024_000),
            ("one sample: since the start", [scan, [{"sector": 2000, "timeMs": 0}], start_ms + 2000], 512_000),
            ("a clock behind that of the service", [scan, [], start_ms - 1], None),
        ])
        self.check("lib/scan_progress.js", "secondsLeft", [
            ("a quarter is read", [scan, 1_024_000], 3),
            ("speed not known", [scan, None], None),
            ("nothing read yet", [scan | {"percent": 0, "currentSector": 0}, 1000], None),
        ])

    def test_reasons(self):
        attribute = {"id": 5, "name": "Reallocated", "value": 36, "worst": 36, "threshold": 36, "raw": 9, "prefailure": True}
        settings = {"wTemp": 55, "cTemp": 65}
        finding = {"kind": "attribute", "id": 5, "severity": "warning", "model": "M", "serial": "S", "number": 0,
                   "since": "2026-11-15T00:00:00Z", "acknowledged": False}

        def reasons(celsius=30, findings=(), level="warning", **change):
            drive = {"model": "M", "serial": "S", "number": 0, "level": level, "temperatureCelsius": celsius,
                     "attributes": [attribute | change]}
            found = browser.call("lib/reasons.js", "allReasons", drive, settings, {"findings": list(findings)})
            return [(reason["kind"], reason["severity"], "finding" in reason) for reason in found]

        warning, critical = ("attribute", "warning", False), ("attribute", "critical", False)
        cases = [
            ("at the threshold", reasons(), [warning]),
            ("above it", reasons(value=37), []),
            ("10 without a threshold", reasons(value=10, threshold=0), [warning]),
            ("5 without a threshold", reasons(value=5, threshold=0), [critical]),
            ("advisory attribute", reasons(value=1, prefailure=False), []),
            ("warm", reasons(55, value=100), [("temperature", "warning", False)]),
            ("hot comes first", reasons(65), [("temperature", "critical", False), warning]),
            ("a finding joins its reason", reasons(findings=[finding]), [("attribute", "warning", True)]),
            ("a growth stands alone", reasons(findings=[finding | {"kind": "growth"}]), [warning, ("growth", "warning", True)]),
            ("another drive's finding", reasons(findings=[finding | {"serial": "T"}]), [warning]),
        ]
        for name, found, expected in cases:
            with self.subTest(name):
                self.assertEqual(found, expected)

    def test_order_of_drives(self):
        def drive(number, level, health=100, celsius=30):
            return {"number": number, "level": level, "healthPercent": health, "temperatureCelsius": celsius}
        drives = [drive(0, "fine"), drive(1, None, None, None), drive(2, "warning", 80), drive(3, "critical"),
                  drive(4, "warning", 70), drive(5, "fine", 100, 44)]
        entries = browser.call("lib/levels.js", "worstFirst", [{"name": "a", "driveList": drives}])
        self.assertEqual([entry["drive"]["number"] for entry in entries], [3, 4, 2, 1, 5, 0])

    def test_windows(self):
        self.check("lib/time_window.js", "zoomed", [
            ("in", [{"from": 2e12, "to": 2.4e12}, 0.5], {"from": 2.1e12, "to": 2.3e12}),
            ("not below ten minutes", [{"from": 2e12, "to": 2e12}, 0.5], {"from": 2e12 - 3e5, "to": 2e12 + 3e5}),
        ])
        self.check("lib/time_window.js", "moved", [
            ("not before the first possible record", [{"from": 946684800000, "to": 946684801000}, -0.5],
             {"from": 946684800000, "to": 946684801000}),
        ])

    def test_changes_of_a_moment_update_the_view_once(self):
        updates = browser.driver.execute_async_script("""
            const done = arguments[0], updates = [];
            import("/lib/store.js").then(({ Store }) => {
                const store = new Store(services => {
                    updates.push(services);
                    setTimeout(() => done(updates));
                });
                ["attic", "cellar", "attic"].forEach(name => store.noteChange(name));
            });""")
        self.assertEqual(updates, [["attic", "cellar"]])

    def test_stream(self):
        self.check("lib/stream.js", "parseEvents", [
            ("comments and two events", [": ping\n\ndata: a\n\ndata: b\n\n"], {"names": ["a", "b"], "rest": ""}),
            ("an event that is not complete", ["data: a\n\ndata: b"], {"names": ["a"], "rest": "data: b"}),
            ("carriage returns", ["data: a\r\n\r\n"], {"names": ["a"], "rest": ""}),
        ])

    def test_chart_interrupts_its_line(self):
        def point(minute):
            return {"time": f"2026-11-15T00:{minute:02}:00Z", "min": 1, "mean": 2, "max": 3}
        rows = browser.call("widgets/temperature_chart.js", "chartRows", [point(m) for m in (0, 3, 6, 30, 33)])
        self.assertEqual([row[1][1] for row in rows], [2, 2, 2, None, 2, 2])

    def test_sparkline_leaves_gaps(self):
        points = [{"x": 0, "y": 5}, None, {"x": 2, "y": 5}, {"x": 3, "y": 5}]
        self.check("widgets/sparkline.js", "linePath", [
            ("flat with a gap", [points, False], "M2.0 12.0h.01M63.3 12.0h.01L94.0 12.0"),
            ("nothing known", [[None], False], ""),
        ])
