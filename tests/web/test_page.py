# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Halvex developers
"""The page in a browser, served by halvex-web for a service on a simulated machine."""

import unittest
from pathlib import Path

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

from browser import Browser
from lab import FAILING, FINE, HOSTILE, HOT, Lab, MARKUP, USERS
from programs import MailServer, PASSWORD, Service, Web, drive, service_entry, wait_for


def setUpModule():
    global lab, service, web, browsers
    lab = Lab()
    service, web, browsers = lab.service, lab.web, lab.browsers


def tearDownModule():
    lab.close()


def drive_url(number, name="lab"):
    return f"{web.url}#/services/{name}/drives/{number}"


def log_in(browser, role, url=None):
    """Opens the page as `role`; None is a stranger."""
    url = url or web.url
    browser.driver.get(url)
    browser.driver.delete_all_cookies()
    browser.open(url, "Log in")
    if role is None:
        return
    browser.one("#login-name").send_keys(USERS[role])
    browser.one("#login-password").send_keys(PASSWORD, Keys.ENTER)
    wait_for(lambda: browser.all(".drive-list tbody tr"), "the list of drives")
    browser.console()  # the browser reports the answer 401 that led to the form


class PageTest(unittest.TestCase):
    def assert_sound(self, browser):
        self.assertEqual(browser.accessibility_violations(), [])
        self.assertLessEqual(browser.overflow(), 0, "the page is wider than the window")
        self.assertEqual(browser.console(), [])


class Views(PageTest):
    VIEWS = [("", "Overview", "FINE DISK"), ("#/services/lab/drives/0", "FAILING DISK", "Advisory"),
             ("#/services/lab/drives/2", MARKUP, "SERIAL-2"), ("#/services/lab", "lab", "Recipient"),
             ("#/services/cellar", "cellar", "Not known"), ("#/events", "Events", "Span of time"),
             ("#/former", "Former drives", "No drive is gone"), ("#/nowhere", "Not found", "no such page")]
    ACTIONS = {"#/services/lab/drives/0": ["#scan-start", "#schedule-save"],
               "#/services/lab": ["#mail-test", "#service-refresh", "#service-detect", ".settings button"]}

    def test_every_view_for_every_role_at_every_width(self):
        for width, browser in browsers.items():
            for role in USERS:
                log_in(browser, role)
                for address, heading, text in self.VIEWS:
                    with self.subTest(width=width, role=role, view=heading):
                        browser.open(web.url + address, heading)
                        browser.wait_text(text)
                        for selector in self.ACTIONS.get(address, []):
                            self.assertEqual(bool(browser.shown(selector)), role == "operator", selector)
                        self.assert_sound(browser)

    def test_a_stranger_sees_the_login_alone(self):
        for width, browser in browsers.items():
            log_in(browser, None)
            for address in ("", "#/services/lab/drives/0", "#/events"):
                with self.subTest(width=width, address=address):
                    browser.open(web.url + address, "Log in")
                    self.assertEqual(browser.text("#view"), "")
                    self.assertEqual(browser.shown("nav"), [])
                    self.assertEqual(browser.accessibility_violations(), [])

    def test_dark_colours_have_contrast(self):
        dark = Browser(1280, is_dark=True)
        self.addCleanup(dark.close)
        log_in(dark, "operator")
        for address, heading, text in self.VIEWS[:4]:
            with self.subTest(heading):
                dark.open(web.url + address, heading)
                dark.wait_text(text)
                self.assert_sound(dark)


class Reading(PageTest):
    @classmethod
    def setUpClass(cls):
        cls.browser = browsers[1280]
        log_in(cls.browser, "reader")

    def names(self):
        return self.browser.texts(".drive-list .drive-name a")

    def test_overview(self):
        browser = self.browser
        browser.open(web.url, "Overview")
        wait_for(lambda: self.names() == ["FAILING DISK", "HOT DISK", "FINE DISK", MARKUP]
                 or self.names() == ["FAILING DISK", "HOT DISK", MARKUP, "FINE DISK"], "the drives, worst first")
        self.assertEqual(browser.texts(".tile-value"), ["1", "1", "0", "2"])
        browser.click("#count-warning")
        self.assertEqual(self.names(), ["HOT DISK"])
        browser.click("#count-warning")
        browser.one("input[type=search]").send_keys("serial-3 LAB")
        self.assertEqual(self.names(), ["FINE DISK"])
        browser.one("input[type=search]").clear()
        browser.one("input[type=search]").send_keys("x", Keys.BACKSPACE)
        self.assertEqual(len(self.names()), 4)
        self.assertIn("Unreachable", browser.text(".service-card.is-unreachable"))

    def test_reasons_of_a_level(self):
        self.browser.open(drive_url(FAILING), "FAILING DISK")
        self.browser.wait_text("(attribute 5) has the value 4; critical from 5 down.", ".reasons")
        self.browser.open(drive_url(HOT), "HOT DISK")
        self.browser.wait_text("The temperature is 57 °C; warning from 55 °C on.\nLimit set in this service's settings", ".reasons")

    def test_a_drive(self):
        browser = self.browser
        browser.open(drive_url(FINE), "FINE DISK")
        browser.wait_text("150 MB of 200 MB used")
        browser.wait_text("268,435,456 bytes")
        browser.wait_text("Europe/Berlin (UTC+01:00)", "footer")
        wait_for(lambda: browser.all(".chart canvas"), "the chart")
        for name in ("Week", "Month", "Year", "All", "Day"):
            button = next(b for b in browser.shown(".segments button") if b.text == name)
            button.click()
            wait_for(lambda: button.get_attribute("aria-pressed") == "true", f"the range {name}")
        browser.wait_text("Minimum 30 °C, mean 30 °C, maximum 30 °C", ".readout")
        browser.click("button[aria-label='Zoom in']")
        wait_for(lambda: not browser.all(".segments button[aria-pressed=true]"), "a chosen span")
        browser.click("#history-5")
        browser.wait_text("100", ".expansion")
        self.assertEqual(browser.console(), [])

    def test_fahrenheit(self):
        browser = self.browser
        browser.open(drive_url(HOT), "HOT DISK")
        browser.wait_text("57 °C", ".facts")
        browser.click("#unit")
        browser.wait_text("135 °F", ".facts")
        browser.wait_text("warning from 131 °F on", ".reasons")
        browser.click("#unit")

    def test_keyboard_alone(self):
        browser = self.browser
        browser.open(web.url, "Overview")
        wait_for(lambda: len(self.names()) == 4, "the drives")

        def press(key):
            ActionChains(browser.driver).send_keys(key).perform()

        def focused():
            return browser.run("const e = document.activeElement; return e.id || `${e.tagName} ${e.innerText}`")

        def tab_to(element):
            for _ in range(40):
                press(Keys.TAB)
                if focused() == element:
                    return
            self.fail(f"no press of the key reached {element}")

        tab_to("skip")
        tab_to("A lab")
        service.heat(HOSTILE, 31)  # the service's card and the drive's row are made anew
        self.addCleanup(service.heat, HOSTILE, 30)
        browser.wait_text("31 °C")
        tab_to("A FAILING DISK")
        press(Keys.ENTER)
        wait_for(lambda: focused() == "H1 FAILING DISK", "the focus on the heading of the drive")

    def test_login_and_logout(self):
        browser = self.browser
        browser.click("#logout")
        browser.open(web.url, "Log in")
        browser.one("#login-name").send_keys("rob")
        browser.one("#login-password").send_keys("wrong", Keys.ENTER)
        browser.wait_text("Login failed", "#login-message")
        log_in(browser, "reader")
        self.assertIn("rob (reader)", browser.text("#user"))


class Actions(PageTest):
    @classmethod
    def setUpClass(cls):
        cls.browser = browsers[1280]
        log_in(cls.browser, "operator")

    def tearDown(self):
        self.browser.console()

    def test_scan_of_a_range_shows_bad_sectors(self):
        browser = self.browser
        browser.open(drive_url(FAILING), "FAILING DISK")
        self.assertIn("has started", self.start_scan(0, 4095))
        browser.wait_text("Complete", ".scan-state")
        browser.wait_text("0 – 511", ".bad-ranges")
        label = browser.one(".surface-map").get_attribute("aria-label")
        self.assertIn("8 read, 1 with bad sectors (1 bad range)", label)

    def start_scan(self, first, last):
        self.browser.one("#scan-start")
        self.browser.run("const f = document.querySelector('#scan-start').form; f.elements.first.value = arguments[0];"
                         "f.elements.last.value = arguments[1]", first, last)
        return self.browser.submit("#scan-start")

    def test_scan_of_a_whole_disk_asks_and_stops(self):
        browser = self.browser
        browser.open(drive_url(FINE), "FINE DISK")
        browser.wait_text("Never scanned", ".scan-state")
        browser.submit("#scan-start", confirm=False)
        browser.wait_text("Never scanned", ".scan-state")
        self.assertIn("has started", browser.submit("#scan-start", confirm=True))
        browser.wait_text("Scanning", ".scan-state")
        self.assertIn("was stopped", browser.submit("#scan-stop"))
        browser.wait_text("Stopped at", ".scan-state")

    def test_schedule(self):
        browser = self.browser
        for values, text in [({"kind": "weekly", "weekday": "sunday", "time": "03:30"}, "Every Sunday at 03:30:00"),
                             ({"kind": "once", "date": "2031-02-03", "time": "04:05:06"}, "2031-02-03 at 04:05:06"),
                             ({"kind": "none"}, "No scan is scheduled")]:
            with self.subTest(text):
                browser.open(drive_url(HOT), "HOT DISK")
                browser.one("#schedule-save")
                browser.run("const f = document.querySelector('#schedule-save').form;"
                            "for (const [name, value] of Object.entries(arguments[0])) f.elements[name].value = value;"
                            "f.dispatchEvent(new Event('change', {bubbles: true}))", values)
                self.assertIn("was saved", browser.submit("#schedule-save"))
                browser.wait_text(text)

    def set_field(self, name, value):
        element = self.browser.one(f"[name={name}]")
        element.clear()
        element.send_keys(value)

    def test_thresholds(self):
        browser = self.browser
        for degrees, badge in (("58", "Fine"), ("55", "Warning")):
            browser.open(f"{web.url}#/services/lab", "lab")
            self.set_field("wTemp", degrees)
            self.assertIn("were saved", browser.submit(".settings:has([name=wTemp]) button"))
            browser.open(drive_url(HOT), "HOT DISK")
            browser.wait_text(badge, ".drive-state")

    def test_mail(self):
        browser, mail = self.browser, MailServer()
        self.addCleanup(mail.close)
        browser.open(f"{web.url}#/services/lab", "lab")
        for name, value in {"smtpServer": "127.0.0.1", "smtpPort": mail.server_address[1], "smtpTo": "ann@example.org",
                            "smtpFrom": "disks@example.org"}.items():
            self.set_field(name, str(value))
        self.assertIn("were saved", browser.submit(".settings:has([name=smtpTo]) button"))
        browser.open(f"{web.url}#/services/lab", "lab")
        browser.wait_text("Recipient")
        self.assertIn("accepted the test mail", browser.submit("#mail-test"))
        self.assertEqual(mail.mails, 1)
        self.assertIn("RCPT TO: <ann@example.org>", browser.text(".transcript"))

    def test_acknowledge(self):
        browser = self.browser
        service.heat(HOSTILE, 68)
        self.addCleanup(service.heat, HOSTILE, 30)
        browser.open(drive_url(HOSTILE), MARKUP)
        self.assertIn("is acknowledged", browser.submit(".reasons button"))
        browser.wait_text("; acknowledged", ".reasons")
        self.assertEqual(browser.shown(".reasons button"), [])

    def test_a_swapped_drive_is_not_scanned(self):
        browser = self.browser
        browser.open(drive_url(HOT), "HOT DISK")
        browser.one("#scan-start")
        browser.run("document.querySelector('#scan-start').form.elements.last.value = 10;"
                    "const fetched = fetch; window.fetch = (path, options) => fetched(path, options.body ?"
                    " {...options, body: options.body.replace('SERIAL-1', 'SERIAL-0')} : options)")
        self.assertIn("drive", browser.submit("#scan-start"))
        self.assertEqual(len(browser.shown(".notice.is-error")), 1)


class IdleService(PageTest):
    """A service that reads its drives only when it is asked to."""

    @classmethod
    def setUpClass(cls):
        root = Path(lab.folder.name)
        cls.service = Service(root / "idle", [drive(0, "IDLE DISK")], {"SMARTPollInterval": 360_000}).start()
        cls.addClassCleanup(cls.service.stop)
        cls.web = Web(root / "idle-web", [service_entry("idle", cls.service)], users=lab.users).start()
        cls.addClassCleanup(cls.web.stop)
        cls.browser = browsers[1280]
        log_in(cls.browser, "operator", cls.web.url)
        cls.browser.open(f"{cls.web.url}#/services/idle", "idle")

    def test_refresh_reads_the_drives(self):
        self.browser.wait_text("30 °C", ".drive-list")
        self.service.heat(0, 41)
        self.assertIn("were read", self.browser.submit("#service-refresh"))
        self.browser.wait_text("41 °C", ".drive-list")

    def test_detect_finds_a_new_drive(self):
        self.service.change(lambda machine: machine["drives"].append(drive(1, "NEW DISK")))
        self.assertIn("has started", self.browser.submit("#service-detect"))
        self.browser.wait_text("NEW DISK", ".drive-list")


class Live(PageTest):
    def test_changes_appear_without_reloading(self):
        browser = browsers[1280]
        log_in(browser, "reader")
        browser.open(drive_url(HOSTILE), MARKUP)
        browser.wait_text("Fine", ".drive-state")
        service.heat(HOSTILE, 68)
        self.addCleanup(service.heat, HOSTILE, 30)
        browser.wait_text("Critical", ".drive-state")
        browser.wait_text("critical from 65 °C on", ".reasons")
        browser.open(f"{web.url}#/events", "Events")
        browser.wait_text(MARKUP)
        self.assertEqual(browser.console(), [])

    def test_service_and_halvex_web_go_away_and_return(self):
        browser = browsers[390]
        log_in(browser, "reader")
        browser.open(web.url, "Overview")
        service.kill()
        wait_for(lambda: len(browser.shown(".drive-list .is-old")) == 4, "values marked as old")
        web.kill()
        browser.wait_text("Connection to halvex-web lost", "#connection")
        service.start()
        web.start()
        log_in(browser, "reader")
        wait_for(lambda: not browser.shown(".drive-list .is-old, #connection"), "live values")


if __name__ == "__main__":
    unittest.main()
