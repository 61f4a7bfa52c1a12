# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Halvex developers
"""The machine that the page is tested with."""

import tempfile
from pathlib import Path

from browser import Browser
from programs import Service, Web, drive, free_port, hashed_password, service_entry

WIDTHS = (1280, 390)
USERS = {"reader": "rob", "operator": "ann"}
MARKUP = "<img src=x onerror=alert(1)>"
FAILING, HOT, HOSTILE, FINE = range(4)


class Lab:
    """A service with four drives, halvex-web that reads it, and a browser for each width of window."""

    def __init__(self):
        self.folder = tempfile.TemporaryDirectory()
        root = Path(self.folder.name)
        drives = [
            drive(0, "FAILING DISK", badSectors=[[100, 107], [200_000, 200_063]]), drive(1, "HOT DISK", 57),
            drive(2, MARKUP), drive(3, "FINE DISK", readDelayMs=50),
        ]
        drives[FAILING]["smart"]["attributes"][0] |= {"current": 4, "worst": 4, "raw": 4000}
        volumes = [{"name": "\\\\?\\Volume{1}\\", "letters": ["C"], "label": "System", "fileSystem": "NTFS",
                    "deviceNumber": FINE, "totalBytes": 200_000_000, "freeBytes": 50_000_000}]
        self.service = Service(root / "service", drives, {"AlertPolicy": "changes"}, volumes).start()
        password = hashed_password()
        self.users = [{"name": name, "role": role, "password": password} for role, name in USERS.items()]
        services = [service_entry("lab", self.service), {"name": "cellar", "host": "127.0.0.1", "port": free_port()}]
        self.web = Web(root / "web", services, users=self.users).start()
        self.browsers = {width: Browser(width) for width in WIDTHS}

    def close(self):
        for browser in self.browsers.values():
            browser.close()
        self.web.stop()
        self.service.stop()
        self.folder.cleanup()
