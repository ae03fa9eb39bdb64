"""Uses the page of the print queues as a person does: in Chromium, which its WebDriver steers."""
import http.client
import json
import re
import subprocess
import unittest

from house import CANCELED, EXAMPLES, House, until

PLOT = EXAMPLES / "moonrise.plt"
TAB, ENTER = "\ue004", "\ue007"  # keys in WebDriver's alphabet


class Browser:
    ELEMENT = "element-6066-11e4-a52e-4f735466cecf"  # WebDriver's name for a reference to one

    def __init__(self, folder):
        self.session = ""
        self.driver = subprocess.Popen(["setpriv", "--pdeathsig", "KILL", "chromedriver", "--port=0"], stdout=subprocess.PIPE,
                                       stderr=subprocess.DEVNULL, text=True)
        self.port = next(found[1] for line in self.driver.stdout if (found := re.search(r"successfully on port (\d+)", line)))
        self.session = "/" + self.call("", capabilities={"alwaysMatch": {
            "goog:loggingPrefs": {"browser": "ALL"},
            "goog:chromeOptions": {"args": ["--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--window-size=1200,900",
                                            f"--user-data-dir={folder}"]}}})["sessionId"]

    def call(self, command, **words):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=30)
        connection.request("POST" if command != "DELETE" else command, f"/session{self.session}{command.removeprefix('DELETE')}",
                           json.dumps(words))
        answer = connection.getresponse()
        value = json.loads(answer.read())["value"]
        connection.close()
        assert answer.status == 200, value
        return value

    def script(self, text, *words):
        return self.call("/execute/sync", script=text, args=words)

    def find(self, style):
        return until(lambda: self.script("return document.querySelector(arguments[0])", style), style)[self.ELEMENT]

    def click(self, style):
        self.call(f"/element/{self.find(style)}/click")

    def press(self, key):
        self.call("/actions", actions=[{"type": "key", "id": "keys", "actions": [{"type": kind, "value": key} for kind in ("keyDown", "keyUp")]}])

    def show(self, width, scheme):
        """As on a screen of that many dots, for somebody who wants it "light" or "dark"."""
        for command, words in (("setDeviceMetricsOverride", {"width": width, "height": 800, "deviceScaleFactor": 1, "mobile": width < 600}),
                               ("setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": scheme}]})):
            self.call("/goog/cdp/execute", cmd="Emulation." + command, params=words)

    def close(self):
        self.call("DELETE")
        self.driver.terminate()
        self.driver.wait()
        self.driver.stdout.close()


class Page(House):
    pace = 30_000  # bytes per second: the plot takes seven seconds

    def setUp(self):
        super().setUp()
        self.browser = Browser(self.folder / "browser")
        self.addCleanup(self.browser.close)
        self.browser.call("/url", url=f"http://localhost:{self.port}/")

    def tearDown(self):
        self.assertEqual(self.browser.call("/se/log", type="browser"), [])

    def await_state(self, words):
        until(lambda: self.browser.script("return document.querySelector('article .state')?.textContent") == words,
              lambda: f"{words}: {self.browser.script('return document.querySelector(`main`).innerText')}")

    def tab_to(self, text):
        until(lambda: self.browser.press(TAB) or self.browser.script("return document.activeElement.textContent").startswith(text), text)

    def test_a_file_is_looked_at_plotted_paused_and_done(self):
        self.browser.call(f"/element/{self.browser.find('[type=file]')}/value", text=str(PLOT))
        self.browser.click(".upload button")
        until(lambda: self.browser.script("return document.querySelector('.picture img')?.naturalWidth"), "the picture")
        self.browser.click("[value=paper-is-in]")
        until(lambda: self.browser.script("return document.querySelector('.job progress')?.value"), "progress")
        self.browser.click("[value=pause]")
        self.await_state("Paused")
        self.browser.click("[value=go-on]")
        self.await_state("Done")
        self.assertEqual(self.taps["a"].heard, PLOT.read_bytes())

    def test_a_job_of_another_client_is_stopped_by_keyboard_on_a_narrow_dark_screen(self):
        self.browser.show(360, "dark")
        job = self.send(PLOT, name="From" + 120 * "e")
        for key in ("Paper is in", "Stop…", "Stop From"):
            self.tab_to(key)
            self.browser.press(ENTER)
        self.await_state("Stopped")
        self.await_job(job, CANCELED)
        self.assertLessEqual(self.browser.script("return document.documentElement.scrollWidth"), 360)
        page, ink = (sum(map(int, re.findall(r"\d+", self.browser.script("return getComputedStyle(document.body)[arguments[0]]", which))))
                     for which in ("backgroundColor", "color"))
        self.assertGreater(ink - page, 500)  # of 3 x 255


if __name__ == "__main__":
    unittest.main()
