#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Halvex developers
"""Prometheus scrapes 500 simulated services of 10 drives each through one halvex-web every 15 seconds: the slowest scrape,
and the memory of halvex-web over time. Beside it the same Prometheus scrapes a node exporter.

environment: HALVEX_BIN, the folder of the programs; FLEET_MINUTES (10)
"""

import contextlib
import json
import os
import pathlib
import subprocess
import tempfile
import time
import urllib.parse
import urllib.request

from measure import BIN, Web, cpu_seconds, free_port, node_exporter, report, resident_bytes, started, wait_for

SERVICES = 500
DRIVES = 10
INTERVAL_S = 15
POLL_S = 60
MINUTES = float(os.environ.get("FLEET_MINUTES", "10"))
EXPORTER_TARGETS = 50  # one would be scraped too seldom to compare its slowest scrape


@contextlib.contextmanager
def simulator():
    with subprocess.Popen([BIN / "fleet_simulator", str(SERVICES), str(DRIVES)], stdout=subprocess.PIPE) as process:
        try:
            yield json.loads(process.stdout.readline())
        finally:
            process.kill()


@contextlib.contextmanager
def halvex_web(folder, services):
    # Prometheus is trusted, as docs/fleet.md advises: scrapes that a busy machine delays need more connections.
    web = Web(folder, services, pollSeconds=POLL_S, trustedProxies=["127.0.0.1"])
    try:
        yield web.start()
    finally:
        web.kill()


def prometheus(folder, web, exporter):
    exporter_targets = [{"targets": [f"127.0.0.1:{exporter.port}"], "labels": {"instance": str(i)}}
                        for i in range(EXPORTER_TARGETS)]
    (folder / "prometheus.yml").write_text(json.dumps({
        "global": {"scrape_interval": f"{INTERVAL_S}s"},
        "scrape_configs": [
            {"job_name": "halvex", "http_sd_configs": [{"url": web.url + "targets"}]},
            {"job_name": "exporter", "static_configs": exporter_targets}]}))
    port = free_port()
    return started("prometheus", f"--config.file={folder}/prometheus.yml", f"--storage.tsdb.path={folder}/tsdb",
                   f"--web.listen-address=127.0.0.1:{port}", port=port)


def query(server, expression):
    """Returns the one value of an expression; None while it has none."""
    url = f"http://127.0.0.1:{server.port}/api/v1/query?" + urllib.parse.urlencode({"query": expression})
    with contextlib.suppress(OSError), urllib.request.urlopen(url, timeout=60) as response:
        result = json.load(response)["data"]["result"]
        return float(result[0]["value"][1]) if result else None
    return None


def report_scrapes(server):
    period = f"{MINUTES * 60:.0f}s"

    def slowest(job):
        return query(server, f'max(max_over_time(scrape_duration_seconds{{job="{job}"}}[{period}]))')

    scrapes = query(server, f'sum(count_over_time(up{{job="halvex"}}[{period}]))')
    answered = query(server, f'sum(sum_over_time(up{{job="halvex"}}[{period}]))')
    report("fleet", f"slowest of {scrapes:.0f} scrapes in {MINUTES:g} minutes ({scrapes - answered:.0f} failed), "
           f"{SERVICES} services of {DRIVES} drives every {INTERVAL_S} s", slowest("halvex"), "s",
           "`prometheus-node-exporter` meanwhile", slowest("exporter"))


def main():
    with contextlib.ExitStack() as stack:
        folder = pathlib.Path(stack.enter_context(tempfile.TemporaryDirectory()))
        web = stack.enter_context(halvex_web(folder / "web", stack.enter_context(simulator())))
        server = stack.enter_context(prometheus(folder, web, stack.enter_context(node_exporter())))
        wait_for(lambda: query(server, "count(smartctl_devices)") == SERVICES, "a scrape of every service", 300)
        time.sleep(POLL_S)  # every service is polled a second time: its data have their lasting size
        pid = web.process.pid
        memory, cpu, start = resident_bytes(pid), cpu_seconds(pid), time.monotonic()
        time.sleep(MINUTES * 60)
        load = (cpu_seconds(pid) - cpu) / (time.monotonic() - start)
        report_scrapes(server)
        report("fleet", f"memory of `halvex-web` after them ({load:.0%} of a core meanwhile)", resident_bytes(pid), "B",
               "before them", memory)


if __name__ == "__main__":
    main()
