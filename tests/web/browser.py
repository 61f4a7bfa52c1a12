# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Halvex developers
"""A browser that looks at the page, and what every view has to fulfil."""

import os
import tempfile
from pathlib import Path

from selenium import webdriver
from selenium.common.exceptions import StaleElementReferenceException
from selenium.webdriver.chrome.service import Service as DriverService
from selenium.webdriver.common.by import By

from programs import ROOT, wait_for

AXE = os.environ.get("HALVEX_AXE", ROOT / "build/web-tools/node_modules/axe-core/axe.min.js")
OPTIONS = ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--hide-scrollbars",
           "--disable-background-networking", "--disable-component-update", "--disable-sync", "--lang=en-GB",
           "--disable-dev-shm-usage"]


class Browser:
    def __init__(self, width, height=900, language="en-GB", is_dark=False):
        options = webdriver.ChromeOptions()
        options.binary_location = "/usr/bin/chromium"
        self.profile = tempfile.TemporaryDirectory()
        for option in [*OPTIONS, f"--user-data-dir={self.profile.name}"]:
            options.add_argument(option)
        options.add_experimental_option("prefs", {"intl.accept_languages": language})
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.driver = webdriver.Chrome(options=options, service=DriverService("/usr/bin/chromedriver"))
        self.driver.execute_cdp_cmd("Emulation.setTimezoneOverride", {"timezoneId": "Europe/Berlin"})
        if is_dark:
            self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia",
                                        {"features": [{"name": "prefers-color-scheme", "value": "dark"}]})
        self.resize(width, height)

    def resize(self, width, height=900):
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                    {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 600})

    def close(self):
        self.driver.quit()
        self.profile.cleanup()

    def open(self, url, heading):
        """Opens a view and waits for its heading."""
        self.driver.get("about:blank")
        self.driver.get(url)
        wait_for(lambda: heading in [element.get_property("textContent") for element in self.all("h1")],
                 f"a view with the heading '{heading}'")

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def one(self, selector):
        return wait_for(lambda: next(iter(self.shown(selector)), None), f"an element '{selector}'")

    def shown(self, selector):
        return self.run("return [...document.querySelectorAll(arguments[0])].filter(e => e.checkVisibility())", selector)

    def click(self, selector):
        """Clicks an element; a poll may replace it between the search and the click."""
        def is_clicked():
            try:
                self.one(selector).click()
                return True
            except StaleElementReferenceException:
                return False
        wait_for(is_clicked, f"a click on '{selector}'")

    def texts(self, selector):
        """Returns the text of each element of `selector` that is shown."""
        return self.run("return [...document.querySelectorAll(arguments[0])].filter(e => e.checkVisibility())"
                        ".map(e => e.innerText)", selector)

    def text(self, selector="main"):
        return "\n".join(self.texts(selector))

    def wait_text(self, text, selector="main"):
        wait_for(lambda: text in self.text(selector), f"the text '{text}' in '{selector}':\n{self.text(selector)}")

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def call(self, module, function, *arguments):
        """Returns the result of a function of the page's modules."""
        return self.driver.execute_async_script(
            "const [module, name, args, done] = arguments;"
            "import(module).then(m => done(m[name](...args))).catch(e => done('failed: ' + e))",
            f"/{module}", function, arguments)

    def submit(self, button, confirm=None):
        """Clicks a button, answers the question that follows, and returns the outcome that the page shows."""
        self.run("document.getElementById('notices').replaceChildren()")
        self.click(button)
        if confirm is not None:
            self.click(f"dialog button[value='{'yes' if confirm else ''}']")
            wait_for(lambda: not self.all("dialog"), "the end of the dialog")
        if confirm is False:
            return None
        self.one(".notice > span")
        return self.text(".notice > span")

    def console(self):
        """Returns what the browser reported since the last call, without the failed requests that a test provokes."""
        return [entry["message"] for entry in self.driver.get_log("browser") if entry["level"] == "SEVERE"]

    def accessibility_violations(self):
        if not self.run("return typeof axe === 'object'"):
            self.run(Path(AXE).read_text(encoding="utf-8"))
        found = self.driver.execute_async_script(
            "axe.run().then(r => arguments[0](r.violations.map(v => "
            "v.id + ': ' + v.nodes.slice(0, 3).map(n => n.html.slice(0, 160)).join(' | '))))")
        return found

    def overflow(self):
        """Returns by how many pixels the page is wider than the window."""
        return self.run("return document.documentElement.scrollWidth - document.documentElement.clientWidth")
