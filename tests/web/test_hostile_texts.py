# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Halvex developers
"""The page and the metrics of a service whose 99 drives have long texts that nobody would choose."""

import re
import subprocess
import tempfile
import unittest
import urllib.request
from pathlib import Path

from browser import Browser
from programs import BIN, Service, Web, drive, service_entry, wait_for

DRIVES = 99
LINE = re.compile(r'#.*|[a-z_]+({([a-z_]+="([^"\\]|\\[n"\\])*",?)*})? \S+')
MARKUP = "<script>document.title='lost'</script>"
TEXTS = [MARKUP, "\"><img src=x onerror=document.title='lost'>", "'\\\"{}[]},\n# TYPE lost gauge\n", "\x1b[2J\x07\x00\x7f",
         "W" * 40, "\u202eright to left\u2028line", "%1%L2", "日本語のとても長い名前 💾💾💾💾💾💾"]


def setUpModule():
    global folder, service, web, browser
    folder = tempfile.TemporaryDirectory()
    root = Path(folder.name)
    drives = [drive(i, TEXTS[i % len(TEXTS)], serial=f"{i}{TEXTS[-1 - i % len(TEXTS)]}"[:20],
                    firmware=TEXTS[(i + 2) % len(TEXTS)][:8]) for i in range(DRIVES)]
    service = Service(root / "service", drives).start()
    web = Web(root / "web", [service_entry("lab", service)]).start()
    browser = Browser(1280)


def tearDownModule():
    browser.close()
    web.stop()
    service.stop()
    folder.cleanup()


class HostileTexts(unittest.TestCase):
    def check_view(self, heading):
        for width in (1280, 390):
            browser.resize(width)
            self.assertTrue(browser.run("return document.documentElement.scrollWidth <= innerWidth"), f"{heading}, {width}")
        self.assertNotIn("lost", browser.driver.title)
        self.assertEqual(browser.console(), [])

    def test_1_overview_and_a_drive(self):
        browser.open(web.url, "Overview")
        wait_for(lambda: len(browser.all(".drive-list tbody tr")) == DRIVES, "all drives")
        self.check_view("Overview")
        browser.driver.get(f"{web.url}#/services/lab/drives/0")
        browser.wait_text(MARKUP, "h1")
        self.check_view("drive 0")

    def test_2_metrics(self):
        lines = urllib.request.urlopen(web.url + "metrics").read().decode().rstrip("\n").split("\n")
        self.assertEqual([line for line in lines if not LINE.fullmatch(line)], [])
        self.assertEqual(len([line for line in lines if line.startswith("smartctl_device{")]), DRIVES)

    def test_3_a_removed_drive_is_a_former_one(self):
        service.change(lambda machine: machine["drives"].pop(0))
        subprocess.run([BIN / "halvexctl", "--port", str(service.port), "--wait", "60", "detect"],
                       check=True, capture_output=True)
        browser.open(f"{web.url}#/former", "Former drives")
        browser.wait_text(MARKUP)
        self.check_view("Former drives")


if __name__ == "__main__":
    unittest.main()
