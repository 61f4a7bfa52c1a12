# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Halvex developers
"""What the benchmarks of halvex-web share: the programs that they start, and the figures of a process."""

import contextlib
import os
import pathlib
import socket
import subprocess
import sys
import types

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests" / "web"))
sys.path.insert(0, str(ROOT / "benchmarks"))

from programs import BIN, Service, Web, drive, free_port, service_entry, wait_for  # noqa: E402, F401: the path is set above
from table import row  # noqa: E402


def cpu_seconds(pid):
    """Returns the processor time of a process since its start."""
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def resident_bytes(pid):
    pages = int(pathlib.Path(f"/proc/{pid}/statm").read_text().split()[1])
    return pages * os.sysconf("SC_PAGE_SIZE")


def listens(port):
    with contextlib.suppress(OSError), socket.create_connection(("127.0.0.1", port), timeout=5):
        return True
    return False


@contextlib.contextmanager
def started(*command, port):
    """Runs a program that serves `port` and prints nothing of interest; `port` and `pid`."""
    with subprocess.Popen([str(word) for word in command], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
        try:
            wait_for(lambda: listens(port), f"{command[0]} at its port")
            yield types.SimpleNamespace(port=port, pid=process.pid)
        finally:
            process.kill()


def node_exporter():
    port = free_port()
    return started("prometheus-node-exporter", f"--web.listen-address=127.0.0.1:{port}", port=port)


def report(name, *values):
    """Prints a row of the README's table and keeps it for the table of the run."""
    text = row(*values)
    print(text, flush=True)
    if "HALVEX_BENCH_RESULTS" in os.environ:
        with open(pathlib.Path(os.environ["HALVEX_BENCH_RESULTS"]) / f"{name}.rows", "a") as file:
            file.write(text + "\n")
