"""Plotters in software, the program vectorix-printer-app with a queue for each, and what its clients do: ipptool, the page.

All of it lives in a temporary folder and ends with the test, also when that is killed. Nothing sleeps but until(), which looks
until something holds.
"""
import http.client
import os
import pathlib
import plistlib
import pty
import re
import shutil
import signal
import socket
import subprocess
import tempfile
import threading
import time
import tty
import unittest
import urllib.parse

IPPTOOL_TESTS = pathlib.Path("/usr/share/cups/ipptool")
BIN, EXAMPLES = pathlib.Path(os.environ["ORB_BIN"]), pathlib.Path(os.environ["ORB_EXAMPLES"])
PROCESSING, *ENDED = 5, 7, 8, 9  # of job-state
CANCELED, ABORTED, COMPLETED = ENDED


def until(holds, what, seconds=20):
    """Gives what holds() gives, once that is something."""
    latest = time.monotonic() + seconds
    while not (found := holds()):
        assert time.monotonic() < latest, f"not within {seconds} s: {what() if callable(what) else what}"
        time.sleep(0.02)
    return found


class Tap:
    """A plotter that keeps what it hears, at so many bytes per second."""

    def __init__(self, link, pace=10_000_000):
        self.heard, self.latest, self.pace, self.link = b"", time.monotonic(), pace, link
        self.master, self.slave = pty.openpty()
        tty.setraw(self.slave)
        link.symlink_to(os.ttyname(self.slave))
        os.set_blocking(self.master, False)
        self.thread = threading.Thread(target=self.listen, daemon=True)
        self.thread.start()

    def listen(self):
        last = time.monotonic()
        budget = 0
        while self.master >= 0:
            time.sleep(0.005)
            now = time.monotonic()
            budget, last = min(budget + (now - last) * self.pace, 1 + self.pace * 0.05), now
            try:
                got = os.read(self.master, int(budget)) if budget >= 1 else b""
            except OSError:
                continue
            if got:
                self.heard, self.latest = self.heard + got, now
            budget -= len(got)

    def silence(self):
        """Seconds since something was heard."""
        return time.monotonic() - self.latest

    def unplug(self):
        self.link.unlink()
        master, self.master = self.master, -1
        self.thread.join()
        os.close(master)
        os.close(self.slave)


class House(unittest.TestCase):
    queues, pace, profile, options = ("a",), 10_000_000, "", ()
    maxDiff = 500

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        # What the program started ends a moment after it.
        self.addCleanup(until, lambda: shutil.rmtree(self.folder, ignore_errors=True) or not self.folder.exists(), self.folder)
        self.environment = dict(os.environ, HOME=str(self.folder), XDG_CONFIG_HOME=str(self.folder), PATH=f"{BIN}:{os.environ['PATH']}")
        self.taps = {}
        for queue in self.queues:
            self.vectorix("profile", "add", queue, "--port", self.folder / queue, *self.profile.split())
            self.plug(queue)
        self.start()

    def plug(self, queue):
        self.taps[queue] = Tap(self.folder / queue, self.pace)
        return self.taps[queue]

    def vectorix(self, *words):
        return subprocess.run(["vectorix", *words], env=self.environment, check=True, capture_output=True, text=True).stdout

    def start(self):
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            self.port = free.getsockname()[1]
        self.program = subprocess.Popen(
            ["setpriv", "--pdeathsig", "KILL", "vectorix-printer-app", "--port", str(self.port), "--state", self.folder / "state", *self.options],
            env=self.environment, stdout=subprocess.PIPE, text=True)
        self.addCleanup(self.end, self.program)
        self.assertIn("queues", self.program.stdout.readline())

    def end(self, program, number=signal.SIGKILL):
        program.send_signal(number)
        program.wait()
        program.stdout.close()

    def ipptool(self, test, *words, queue="a", check=True):
        run = subprocess.run(["ipptool", *words, f"ipp://localhost:{self.port}/ipp/print/{queue}", test],
                             env=self.environment, capture_output=True, check=False)
        self.assertTrue(not check or run.returncode == 0, run.stdout.decode(errors="replace")[-3000:])
        return run.stdout

    def ipp(self, operation, lines="", *words, queue="a", status="successful-ok"):
        """A request; what it has beside the usual as lines of ipptool. Gives the answer's attributes, job by job."""
        test = self.folder / f"{threading.get_ident()}.test"
        test.write_text(f"""{{ OPERATION {operation} GROUP operation-attributes-tag ATTR charset attributes-charset utf-8
            ATTR language attributes-natural-language en ATTR uri printer-uri $uri ATTR name requesting-user-name me
            {lines} }}""")
        answer = plistlib.loads(self.ipptool(test, "-tX", *words, queue=queue, check=False))["Tests"][0]
        self.assertIn(answer["StatusCode"], status.split(), operation)
        return answer["ResponseAttributes"][1:]

    def send(self, file, attributes="", *words, queue="a", type="application/octet-stream", name="drawing"):
        """Gives the job's number."""
        return self.ipp("Print-Job", f"""ATTR name job-name $title ATTR mimeMediaType document-format {type}
            GROUP job-attributes-tag {attributes} FILE {file}""", "-d", f"title={name}", *words, queue=queue)[0]["job-id"]

    def job(self, number, queue="a"):
        return self.ipp("Get-Job-Attributes", f"""ATTR integer job-id {number}
            ATTR keyword requested-attributes job-id,job-state,job-state-message,job-state-reasons""", queue=queue)[0]

    def reasons(self, queue="a"):
        return self.ipp("Get-Printer-Attributes", queue=queue)[0]["printer-state-reasons"]

    def await_job(self, number, *states, queue="a", seconds=30):
        return until(lambda: (job := self.job(number, queue))["job-state"] in states and job, lambda: self.job(number, queue), seconds)

    def await_question(self, queue="a"):
        until(lambda: "media-needed" in self.reasons(queue), "a question for paper")

    def paper_is_in(self, queue="a"):
        self.await_question(queue)
        self.ipp("Resume-Printer", queue=queue)

    def await_rest(self):
        until(lambda: self.taps["a"].silence() > 1, "a plotter at rest")

    def plot(self, file, attributes="", **options):
        """Gives the job, when it has ended, and what arrived."""
        before = len(self.taps["a"].heard)
        number = self.send(file, attributes, **options)
        self.paper_is_in()
        job = self.await_job(number, *ENDED)
        return job, self.taps["a"].heard[before:]

    def page(self, method="GET", path="/", body=None, headers=()):
        connection = http.client.HTTPConnection("localhost", self.port, timeout=20)
        connection.request(method, path, body, dict(headers))
        answer = connection.getresponse()
        text = answer.read().decode()
        connection.close()
        return answer.status, text

    def session(self, text):
        return re.search(r'data-session="(\w+)"', text)[1]

    def act(self, action, job, queue="a"):
        """Presses a button of the page, once it is there."""
        text = until(lambda: (text := self.page()[1]) and f'value="{action}"' in text and text, action)
        status, _ = self.page("POST", "/do", urllib.parse.urlencode(dict(queue=queue, job=job, action=action, session=self.session(text))))
        self.assertEqual(status, 303)
