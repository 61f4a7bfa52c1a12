#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Halvex developers
"""Runs Prometheus and Alertmanager over halvex-web and the service on a simulated machine.

environment: HALVEX_BIN, the folder of the programs
"""

import contextlib
import http.server
import json
import pathlib
import subprocess
import sys
import tempfile
import threading
import unittest
import urllib.parse
import urllib.request

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "web"))

from programs import BIN, free_port, wait_for  # noqa: E402: the path is set above

RULES = ROOT / "packaging" / "prometheus" / "halvex.rules.yml"
DASHBOARD = ROOT / "packaging" / "grafana" / "halvex.json"
PATIENCE_S = 120

# The queries of the dashboards and rules for the compatible names, derived from the names.
COMPATIBLE = {
    'smartctl_device{model_name="HOT DISK"}': 1,
    'count(smartctl_device_smart_status == 1)': 2,
    'smartctl_device_temperature{temperature_type="current", device="ata-HOT_DISK_S-0"}': 40,
    'smartctl_device_attribute{attribute_name="Reallocated_Sector_Ct", attribute_value_type="raw",'
    ' device="ata-HOT_DISK_S-0"}': 0,
    'smartctl_device_attribute{attribute_id="5", attribute_value_type="thresh", device="ata-HOT_DISK_S-0"}': 36,
    'sum(smartctl_device_capacity_bytes)': 2000409772032,
    'smartctl_device_block_size{blocks_type="logical", device="ata-HOT_DISK_S-0"}': 512,
    'smartctl_device_power_cycle_count{device="ata-HOT_DISK_S-0"}': 44,
}


def machine(temperature=40, reallocated=0, drives=2):
    def drive(number, model, celsius):
        values = [(5, 51, 100, 36, reallocated), (12, 50, 100, 0, 44), (194, 34, 100 - celsius, 0, celsius)]
        return {
            "number": number, "model": model, "serial": f"S-{number}", "capacity": 1000204886016,
            "smart": {"attributes": [
                {"id": i, "flags": f, "current": v, "worst": v, "threshold": t, "raw": r} for i, f, v, t, r in values]},
        }
    return {"drives": [drive(0, "HOT DISK", temperature), drive(1, "COOL DISK", 30)][:drives]}


def until(condition, what):
    """Waits until `condition` returns something true, and returns it. What does not answer yet is asked again."""
    def quiet():
        with contextlib.suppress(OSError, KeyError, IndexError, json.JSONDecodeError):
            return condition()
        return None
    return wait_for(quiet, what, PATIENCE_S)


def fetch(url):
    with urllib.request.urlopen(url, timeout=10) as response:
        return response.read().decode()


class Webhook(http.server.BaseHTTPRequestHandler):
    received = []

    def do_POST(self):
        body = json.loads(self.rfile.read(int(self.headers["Content-Length"])))
        self.received += [(alert["labels"]["alertname"], alert["status"]) for alert in body["alerts"]]
        self.send_response(200)
        self.end_headers()

    def log_message(self, *_):
        pass


class Fleet(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.path = pathlib.Path(cls.folder.name)
        cls.processes = []
        cls.ports = {name: free_port() for name in ("service", "web", "prometheus", "alertmanager")}
        cls.hook = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Webhook)
        threading.Thread(target=cls.hook.serve_forever, daemon=True).start()
        cls.write_machine(machine())
        cls.start_service()
        cls.write("web.json", json.dumps({
            "listen": f"127.0.0.1:{cls.ports['web']}", "pollSeconds": 5,
            "services": [{"name": "files", "host": "127.0.0.1", "port": cls.ports["service"]}]}))
        cls.start(BIN / "halvex-web", "--config", cls.path / "web.json", "--state", cls.path / "web")
        cls.start_prometheus()

    @classmethod
    def tearDownClass(cls):
        for process in cls.processes:
            process.kill()
            process.wait()
        cls.hook.shutdown()
        cls.folder.cleanup()

    @classmethod
    def write(cls, name, text):
        temporary = cls.path / (name + ".new")
        temporary.write_text(text)
        temporary.rename(cls.path / name)

    @classmethod
    def write_machine(cls, content):
        cls.write("machine.json", json.dumps(content))

    @classmethod
    def change_machine(cls, content):
        cls.write_machine(content)
        subprocess.run([BIN / "halvexctl", "--host", "127.0.0.1", "--port", str(cls.ports["service"]),
                        "--wait", "60", "detect"], capture_output=True, check=True, timeout=PATIENCE_S)

    @classmethod
    def start(cls, *command, **options):
        with open(cls.path / f"{pathlib.Path(command[0]).name}.log", "ab") as log:
            process = subprocess.Popen([str(word) for word in command], stdout=log, stderr=log, **options)
        cls.processes.append(process)
        return process

    @classmethod
    def start_service(cls):
        home = cls.path / "home"
        home.mkdir(exist_ok=True)
        (home / "service-key.json").write_text(json.dumps({
            "ImagePath": f"{home}/halvex-monitor-service", "Port": cls.ports["service"], "SMARTPollInterval": 1}))
        cls.service = cls.start(BIN / "halvex-monitor-service", "-exec", env={
            "HALVEX_HOME": str(home), "HALVEX_MACHINE": str(cls.path / "machine.json"), "PATH": "/usr/bin:/bin"})

    @classmethod
    def start_prometheus(cls):
        # The rules as they are, but with waits of seconds, so that the test need not wait for minutes.
        rules = RULES.read_text()
        for wait in ("5m", "10m", "15m", "1h"):
            rules = rules.replace(f"for: {wait}", "for: 1s")
        cls.write("halvex.rules.yml", rules)
        cls.write("alertmanager.yml", json.dumps({
            "route": {"receiver": "hook", "group_wait": "1s", "group_interval": "1s", "group_by": ["alertname", "device"]},
            "receivers": [{"name": "hook", "webhook_configs": [
                {"url": f"http://127.0.0.1:{cls.hook.server_port}/", "send_resolved": True}]}]}))
        cls.write("prometheus.yml", json.dumps({
            "global": {"scrape_interval": "1s", "evaluation_interval": "1s"},
            "rule_files": ["halvex.rules.yml"],
            "alerting": {"alertmanagers": [
                {"static_configs": [{"targets": [f"127.0.0.1:{cls.ports['alertmanager']}"]}]}]},
            "scrape_configs": [{"job_name": "halvex", "http_sd_configs": [
                {"url": f"http://127.0.0.1:{cls.ports['web']}/targets", "refresh_interval": "1s"}]}]}))
        cls.start("prometheus-alertmanager", f"--config.file={cls.path}/alertmanager.yml",
                  f"--storage.path={cls.path}/alertmanager", "--cluster.listen-address=",
                  f"--web.listen-address=127.0.0.1:{cls.ports['alertmanager']}")
        cls.start("prometheus", f"--config.file={cls.path}/prometheus.yml", f"--storage.tsdb.path={cls.path}/tsdb",
                  f"--web.listen-address=127.0.0.1:{cls.ports['prometheus']}")

    def query(self, expression):
        text = fetch(f"http://127.0.0.1:{self.ports['prometheus']}/api/v1/query?"
                     + urllib.parse.urlencode({"query": expression}))
        return [(item["metric"], float(item["value"][1])) for item in json.loads(text)["data"]["result"]]

    def test_1_compatible_queries(self):
        for expression, value in COMPATIBLE.items():
            with self.subTest(expression):
                result = until(lambda e=expression: self.query(e), expression)
                self.assertEqual([value], [found for _, found in result])

    def test_2_dashboard(self):
        until(lambda: self.query("halvex_drive_rated"), "the first scrape")
        variables = {"$instance": "files", "$device": "ata-HOT_DISK_S-0"}
        without_data = {"Power-on time", "Surface scan", "Volumes with the least room"}  # this machine has none
        for panel in json.loads(DASHBOARD.read_text())["panels"]:
            for target in panel.get("targets", []):
                expression = target["expr"]
                for name, value in variables.items():
                    expression = expression.replace(name, value)
                with self.subTest(panel["title"]):
                    result = self.query(expression)
                    self.assertTrue(result or panel["title"] in without_data or expression.endswith("> 0"), expression)

    def test_3_metrics_lint(self):
        text = fetch(f"http://127.0.0.1:{self.ports['web']}/metrics")
        lint = subprocess.run(["promtool", "check", "metrics"], input=text, capture_output=True, text=True, check=False)
        forced = 'smartctl_device_power_cycle_count non-histogram and non-summary metrics should not have "_count" suffix'
        self.assertEqual(forced, (lint.stdout + lint.stderr).strip())

    def test_4_alerts(self):
        def arrives(alert, status):
            until(lambda: (alert, status) in Webhook.received, f"{alert} {status}")

        for change, alert in [
            ({"temperature": 70}, "HalvexDriveCritical"),
            ({"reallocated": 9}, "HalvexSectorsGrow"),
            ({"drives": 1}, "HalvexDriveUnreadable"),
        ]:
            with self.subTest(alert):
                self.change_machine(machine(**change))
                arrives(alert, "firing")
                if alert != "HalvexSectorsGrow":  # which lasts a day
                    self.change_machine(machine())
                    arrives(alert, "resolved")
        with self.subTest("HalvexServiceSilent"):
            self.service.kill()
            self.service.wait()
            arrives("HalvexServiceSilent", "firing")
            self.start_service()
            arrives("HalvexServiceSilent", "resolved")

    def test_5_export(self):
        blocks = self.path / "blocks"
        (blocks / "wal").mkdir(parents=True)  # promtool dumps nothing less than a whole database
        exported = subprocess.run(
            [BIN / "halvex-web", "--config", self.path / "web.json", "--export", "files"],
            capture_output=True, check=True, timeout=60).stdout
        (self.path / "files.om").write_bytes(exported)
        subprocess.run(["promtool", "tsdb", "create-blocks-from", "openmetrics", self.path / "files.om", blocks],
                       capture_output=True, check=True, timeout=60)
        dump = subprocess.run(["promtool", "tsdb", "dump", blocks], capture_output=True, text=True, check=True).stdout
        self.assertIn('device="ata-COOL_DISK_S-1", instance="files", temperature_type="current"} 30', dump)


if __name__ == "__main__":
    unittest.main(verbosity=2)
