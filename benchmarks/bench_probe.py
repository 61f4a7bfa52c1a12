#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Halvex developers
"""The metrics of a service with 99 drives from halvex-web, beside those of Prometheus's node exporter: bytes per second
of processor time. Both are asked in turn over one connection each.

environment: HALVEX_BIN, the folder of the programs
"""

import contextlib
import http.client
import pathlib
import tempfile

from measure import Service, Web, cpu_seconds, drive, node_exporter, report, service_entry, wait_for

ROUNDS = 5
CPU_SECONDS = 2  # of each program and round


def full_drive(number):
    """Returns a drive with 30 attributes, which is all that a drive can have."""
    return drive(number, smart={"attributes": [
        {"id": i, "flags": 51, "current": 100, "worst": 99, "threshold": 36, "raw": 124179459 + i} for i in range(1, 31)]})


class Scraper:
    def __init__(self, port, path):
        self.connection = http.client.HTTPConnection("127.0.0.1", port, timeout=60)
        self.path = path

    def scrape(self):
        self.connection.request("GET", self.path)
        return self.connection.getresponse().read()

    def answers(self, *expected):
        with contextlib.suppress(OSError):
            text = self.scrape()
            return all(word in text for word in expected)
        self.connection.close()
        return False


def bytes_and_seconds(scraper, pid):
    """Scrapes until the process has used its share of processor time; that is counted in ticks of 10 ms."""
    start, size = cpu_seconds(pid), 0
    while cpu_seconds(pid) - start < CPU_SECONDS:
        size += len(scraper.scrape())
    return size, cpu_seconds(pid) - start


@contextlib.contextmanager
def halvex_web(folder):
    service = Service(folder, [full_drive(i) for i in range(99)])
    web = Web(folder / "web", [service_entry("files", service)])
    try:
        service.start()
        web.start()
        scraper = Scraper(web.port, "/probe?target=files")
        wait_for(lambda: scraper.answers(b"SERIAL-0", b"SERIAL-98"), "the metrics of 99 drives")
        yield scraper, web.process.pid
    finally:
        for program in (web, service):
            if program.process:
                program.kill()


def main():
    with tempfile.TemporaryDirectory() as folder, halvex_web(pathlib.Path(folder)) as ours, node_exporter() as exporter:
        other = Scraper(exporter.port, "/metrics"), exporter.pid
        totals = {ours: [0, 0], other: [0, 0]}
        for _ in range(ROUNDS):
            for server, total in totals.items():
                size, seconds = bytes_and_seconds(*server)
                total[0] += size
                total[1] += seconds
        rates = [size / seconds for size, seconds in totals.values()]
        sizes = [f"{len(server[0].scrape()) / 1e6:.2g} MB" for server in totals]
        report("probe", f"`/probe` of 99 drives ({sizes[0]}), bytes per second of processor time", rates[0], "B/s",
               f"`/metrics` ({sizes[1]}) of `prometheus-node-exporter`", rates[1])


if __name__ == "__main__":
    main()
