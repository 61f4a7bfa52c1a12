# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Halvex developers
"""The real programs that the tests of the page run: a service on a simulated machine, and halvex-web."""

import base64
import copy
import hashlib
import json
import os
import signal
import socket
import socketserver
import subprocess
import threading
import time
import urllib.error
import urllib.request
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BIN = Path(os.environ.get("HALVEX_BIN", ROOT / "build/debug/bin"))
DEADLINE_S = int(os.environ.get("HALVEX_DEADLINE", 60))


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_for(condition, what, deadline_s=DEADLINE_S):
    """Returns the first true result of `condition`."""
    end = time.monotonic() + deadline_s
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            raise AssertionError(f"this did not happen within {deadline_s} s: {what}")
        time.sleep(0.05)


def drive(number, model="TEST DISK", celsius=30, **keys):
    """Returns a drive of a machine file."""
    return {
        "number": number, "model": model, "serial": f"SERIAL-{number}", "firmware": "1.0",
        "capacity": 256 * 1024 * 1024, "ataMajor": 1020,
        "smart": {"attributes": [
            {"id": 5, "flags": 51, "current": 100, "worst": 100, "threshold": 36, "raw": 0},
            {"id": 9, "flags": 50, "current": 90, "worst": 90, "threshold": 0, "raw": 20000},
            {"id": 194, "flags": 2, "current": 100, "worst": 100, "threshold": 0, "raw": celsius},
        ]},
    } | keys


class Program:
    """A process with a log. `stop` fails unless it ends with exit code 0."""

    def __init__(self, folder, name, arguments, environment):
        folder.mkdir(exist_ok=True)
        self.folder, self.arguments = folder, [str(BIN / name), *arguments]
        self.environment = {**os.environ, **environment}
        self.log = folder / f"{name}.log"
        self.process = None

    def start(self):
        with self.log.open("a") as log:
            self.process = subprocess.Popen(self.arguments, env=self.environment, stdout=log, stderr=log,
                                            stdin=subprocess.DEVNULL)
        return self

    def kill(self):
        self.process.kill()
        self.process.wait()

    def stop(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
        code = self.process.wait(DEADLINE_S)
        assert code == 0, f"{self.arguments[0]} ended with {code}:\n{self.log.read_text()}"


class Service(Program):
    """The service with a home of its own. `machine` is changed with `change`."""

    def __init__(self, folder, drives, key=None, volumes=()):
        self.port = free_port()
        self.machine_file = folder / "machine.json"
        super().__init__(folder, "halvex-monitor-service", ["-exec"],
                         {"HALVEX_HOME": str(folder), "HALVEX_MACHINE": str(self.machine_file)})
        key = {"ImagePath": f"{folder}/halvex-monitor-service", "Port": self.port, "SMARTPollInterval": 1} | (key or {})
        (folder / "service-key.json").write_text(json.dumps(key))
        (folder / "service-key.json").chmod(0o600)
        self.machine = {"drives": drives, "volumes": list(volumes)}
        self.change(lambda machine: None)

    def change(self, edit):
        """Applies `edit` to the machine in one step."""
        machine = copy.deepcopy(self.machine)
        edit(machine)
        fresh = self.machine_file.with_suffix(".new")
        fresh.write_text(json.dumps(machine))
        fresh.rename(self.machine_file)
        self.machine = machine

    def heat(self, place, celsius):
        def edit(machine):
            machine["drives"][place]["smart"]["attributes"][2]["raw"] = celsius
        self.change(edit)


PASSWORD = "correct horse"


def hashed_password():
    """Returns what --hash-password prints, with the fewest iterations that halvex-web accepts: a login is quick."""
    salt = os.urandom(16)
    key = hashlib.pbkdf2_hmac("sha256", PASSWORD.encode(), salt, 10_000)
    return f"pbkdf2-sha256:10000:{base64.b64encode(salt).decode()}:{base64.b64encode(key).decode()}"


class Web(Program):
    """halvex-web with a configuration and a state folder of its own."""

    def __init__(self, folder, services, **configuration):
        folder.mkdir(exist_ok=True)
        self.port = free_port()
        self.url = f"http://127.0.0.1:{self.port}/"
        file = folder / "web.json"
        file.write_text(json.dumps({"listen": f"127.0.0.1:{self.port}", "pollSeconds": 5,
                                    "services": services} | configuration))
        file.chmod(0o600)
        super().__init__(folder, "halvex-web", ["--config", str(file), "--state", str(folder / "state")], {})

    def start(self):
        super().start()
        wait_for(self.is_healthy, f"an answer of halvex-web\n{self.log.read_text()}")
        return self

    def is_healthy(self):
        try:
            with urllib.request.urlopen(self.url + "-/healthy", timeout=5) as response:
                return response.status == 200
        except (urllib.error.URLError, OSError):
            return False


def service_entry(name, service):
    return {"name": name, "host": "127.0.0.1", "port": service.port}


class MailServer(socketserver.ThreadingTCPServer):
    """Accepts every mail; `mails` counts them."""

    daemon_threads = True

    class Handler(socketserver.StreamRequestHandler):
        def handle(self):
            self.wfile.write(b"220 mail.test\r\n")
            for line in self.rfile:
                word = line.strip().upper()
                if word == b"DATA":
                    self.wfile.write(b"354 go on\r\n")
                    while self.rfile.readline().strip() != b".":
                        pass
                    self.server.mails += 1
                self.wfile.write(b"221 bye\r\n" if word == b"QUIT" else b"250 fine\r\n")

    def __init__(self):
        super().__init__(("127.0.0.1", 0), self.Handler)
        self.mails = 0
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def close(self):
        self.shutdown()
        self.server_close()
