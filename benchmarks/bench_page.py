#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Halvex developers
"""The page in a browser: a year of temperatures, and the overview of 1,000 drives, whose services are polled meanwhile.

environment: HALVEX_BIN, the folder of the programs; PAGE_MINUTES (5), how long the polls are measured
"""

import contextlib
import datetime
import json
import os
import pathlib
import subprocess
import tempfile
import time

from measure import BIN, Service, Web, cpu_seconds, drive, report, resident_bytes, service_entry, wait_for
from browser import Browser

RECORDS = 175_200  # a year of polls every three minutes
SERVICES, DRIVES, POLL_S = 100, 10, 60
MINUTES = float(os.environ.get("PAGE_MINUTES", "5"))

# Both return milliseconds. A chart is there when the browser has painted the frame after it was made.
CLICK_TO_CHART = """
const done = arguments[0], host = document.querySelector(".chart"), start = performance.now();
new MutationObserver((_, observer) => {
    if (!host.querySelector("canvas")) return;
    observer.disconnect();
    requestAnimationFrame(() => setTimeout(() => done(performance.now() - start)));
}).observe(host, { childList: true, subtree: true });
document.querySelector("[data-range=year]").click();
"""
READ_ONLY = """
const [path, done] = arguments, start = performance.now();
fetch(path).then(response => response.arrayBuffer()).then(() => done(performance.now() - start));
"""
LONG_TASKS = """
window.longTasks = [];
new PerformanceObserver(list => longTasks.push(...list.getEntries().map(entry => [entry.startTime, entry.duration])))
    .observe({ type: "longtask", buffered: true });
"""


def year_of_records():
    """Returns a temperature log of drive 0 that ends now."""
    end = datetime.datetime.now()
    records = bytearray()
    for i in range(RECORDS, 0, -1):
        time_of_record = end - datetime.timedelta(minutes=3 * i)
        fields = (time_of_record.year - 2000, time_of_record.month, time_of_record.day, time_of_record.hour,
                  time_of_record.minute, time_of_record.second, 0, 30 + i // 480 % 20)
        records += bytes(field + 33 for field in fields)
    return records


def chart(folder, browser):
    folder.mkdir()
    service = Service(folder, [drive(0)])
    (folder / "temperature.log").write_bytes(year_of_records())
    web = Web(folder / "web", [service_entry("lab", service)])
    try:
        service.start()
        web.start()
        report("page", "memory of `halvex-web` with one service", resident_bytes(web.process.pid), "B",
               "`halvex-monitor-service`", resident_bytes(service.process.pid))
        browser.open(f"{web.url}#/services/lab/drives/0", "TEST DISK")
        browser.one(".chart canvas")
        clicks = [browser.driver.execute_async_script(CLICK_TO_CHART) for _ in range(5)]
        begin = (datetime.datetime.utcnow() - datetime.timedelta(days=365)).isoformat(timespec="seconds")
        path = f"/api/v1/services/lab/drives/0/temperatures?from={begin}Z&format=csv"
        reads = [browser.driver.execute_async_script(READ_ONLY, path) for _ in range(5)]
        report("page", f"year of {RECORDS:,} temperatures, from the click to the chart (slowest of 5)",
               max(clicks) / 1000, "s", "reading its records as CSV", max(reads) / 1000)
    finally:
        for program in (web, service):
            if program.process:
                program.kill()


def overview(web, browser):
    browser.driver.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": LONG_TASKS})
    browser.driver.get(web.url)
    time.sleep(POLL_S)  # without a question, which would be a task too; all services are polled meanwhile
    drives = len(browser.all("tbody tr"))
    paint = browser.run("return performance.getEntriesByName('first-contentful-paint')[0].startTime")
    later = [duration for start, duration in browser.run("return window.longTasks") if start > paint]
    report("page", f"first paint of the overview of {drives:,} drives", paint / 1000, "s", "longest task after it",
           max(later, default=0) / 1000)


def fleet(folder, browser):
    with subprocess.Popen([BIN / "fleet_simulator", str(SERVICES), str(DRIVES)], stdout=subprocess.PIPE) as simulator:
        web = Web(folder, json.loads(simulator.stdout.readline()), pollSeconds=POLL_S)
        try:
            web.start()
            pid, cpu, start = web.process.pid, cpu_seconds(web.process.pid), time.monotonic()
            time.sleep(MINUTES * 60)
            load = (cpu_seconds(pid) - cpu) / (time.monotonic() - start)
            report("page", f"memory of `halvex-web` after {MINUTES:g} minutes of polling {SERVICES} services of {DRIVES} "
                   f"drives every {POLL_S} s ({load:.1%} of a core)", resident_bytes(pid), "B")
            overview(web, browser)
        finally:
            web.kill()
            simulator.kill()


def main():
    with tempfile.TemporaryDirectory() as path, contextlib.closing(Browser(1280)) as browser:
        chart(pathlib.Path(path) / "chart", browser)
        fleet(pathlib.Path(path) / "fleet", browser)


if __name__ == "__main__":
    main()
