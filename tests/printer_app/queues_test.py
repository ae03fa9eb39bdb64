"""Tries print queues as their clients do. Each class is a CTest test of its own; see house.py."""
import json
import os
import random
import re
import shutil
import signal
import socket
import subprocess
import threading
import time
import unittest
from pathlib import Path

from house import ABORTED, CANCELED, COMPLETED, ENDED, EXAMPLES, House, IPPTOOL_TESTS, PROCESSING, until

PLOT = EXAMPLES / "moonrise.plt"
WHOLE = PLOT.read_bytes()
PDF, SVG, HPGL = "application/pdf", "image/svg+xml", "application/vnd.hp-HPGL"


class Clients(House):
    """What the tests of ipptool find, those that come with it."""
    profile = "--no-confirm"

    def test_conformance(self):
        until(lambda: self.ipp("Get-Printer-Attributes")[0]["printer-up-time"] > 0, "a second")
        self.assertLessEqual({PDF, SVG, HPGL}, set(self.ipp("Get-Printer-Attributes")[0]["document-format-supported"]))
        suites = [shutil.copy(IPPTOOL_TESTS / f"ipp-{version}.test", self.folder) for version in ("1.1", "2.0")]
        for name in re.findall(r"FILE ([a-z0-9-]+\.[a-z]+)$", Path(suites[0]).read_text(), re.M):  # which not all systems have
            shutil.copy(EXAMPLES / "tides.pdf", self.folder / name)
        for suite in [IPPTOOL_TESTS / "get-printer-attributes.test", *suites]:
            said = self.ipptool(suite, "-Itv", "-f", PLOT, "-d", f"filetype={HPGL}", check=False).decode(errors="replace")
            # PAPPL gives a job that is held no job-state-reasons.
            self.assertLessEqual(set(re.findall(r"^    (.*\S) +\[FAIL\]", said, re.M)), {"Print-Job with job-hold-until"}, said)
            self.assertIn("[PASS]", said)
            for job in self.ipp("Get-Jobs", "ATTR keyword which-jobs not-completed"):
                if job:
                    self.ipp("Cancel-Job", f"ATTR integer job-id {job['job-id']}",
                             status="successful-ok client-error-not-possible")  # as it may have ended meanwhile


class Documents(House):
    profile = "--area 0,0,400,277"  # an A3 sheet's

    def box(self, heard):
        (self.folder / "heard.plt").write_bytes(heard)
        return json.loads(self.vectorix("preview", self.folder / "heard.plt", "--json"))["box"]

    def test_plot_files_arrive_as_they_are(self):
        for type in (HPGL, "application/octet-stream"):
            job, heard = self.plot(PLOT, type=type)
            self.assertEqual((job["job-state"], heard == WHOLE), (COMPLETED, True), type)

    def test_drawings_lie_as_asked_for(self):
        a4 = "ATTR keyword media iso_a4_210x297mm"
        for file, type, attributes, box in (
                ("lighthouse.svg", SVG, "ATTR keyword print-scaling fit", [0, 19.2, 400, 257.8]),
                ("tides.pdf", PDF, f"{a4} ATTR keyword print-scaling fit", [0, 8.1, 277, 181.9]),
                ("tides.pdf", PDF, f"{a4} ATTR keyword print-scaling none", [-1.5, 2.2, 198, 127.3]),
                ("tides.pdf", PDF, "ATTR enum orientation-requested 4 ATTR keyword print-scaling fit", [113.1, 0, 286.9, 277]),
                ("moonrise.plt", HPGL, f"{a4} ATTR keyword print-scaling fit", [0.6, 0, 276.4, 190])):
            with self.subTest(file + attributes):
                _, heard = self.plot(EXAMPLES / file, attributes, type=type)
                for is_at, belongs in zip(self.box(heard), box):
                    self.assertAlmostEqual(is_at, belongs, delta=0.2)

    def test_each_page_and_copy_is_a_sheet(self):
        (self.folder / "pages.pdf").write_bytes(pages(3))
        number = self.send(self.folder / "pages.pdf", "ATTR rangeOfInteger page-ranges 2-9 ATTR integer copies 2", type=PDF)
        sheets, pens = [], []
        for _ in range(4):
            before = len(self.taps["a"].heard)
            self.paper_is_in()
            until(lambda: "media-needed" not in self.reasons(), "plotting")
            until(lambda: "media-needed" in self.reasons() or self.job(number)["job-state"] in ENDED, "the sheet's end")
            heard = self.taps["a"].heard[before:]
            sheets.append(self.box(heard))
            pens += re.findall(b"SP([1-9])", heard)
        self.assertEqual((sheets[:2], self.job(number)["job-state"]), (sheets[2:], COMPLETED))
        self.assertNotEqual(sheets[0], sheets[1])
        self.assertEqual(pens, [b"1", b"2"] * 2)  # each colour has its pen on all sheets

    def test_what_cannot_be_plotted_is_refused(self):
        for file, type, what in (("dots.png", "image/png", "Send PDF, SVG or HP-GL"), ("no.pdf", PDF, "no.pdf")):
            (self.folder / file).write_bytes(b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\1\0\0\0\1\b")
            job = self.await_job(self.send(self.folder / file, type=type, name=file), *ENDED)
            self.assertEqual(job["job-state"], ABORTED)
            self.assertIn(what, job["job-state-message"])


def pages(count):
    """A PDF whose page n has a line of n x 50 points, and a colour of its own."""
    parts = ["<</Type/Catalog/Pages 2 0 R>>",
             f"<</Type/Pages/MediaBox[0 0 500 500]/Count {count}/Kids[{' '.join(f'{3 + 2 * i} 0 R' for i in range(count))}]>>"]
    for i in range(count):
        line = f"0 0 {i / count:.2f} RG 100 100 m {150 + 50 * i} 130 l S"
        parts += [f"<</Type/Page/Parent 2 0 R/Contents {4 + 2 * i} 0 R>>", f"<</Length {len(line)}>>stream\n{line}\nendstream"]
    objects = "".join(f"{i} 0 obj{part}endobj\n" for i, part in enumerate(parts, 1))
    return f"%PDF-1.4\n{objects}trailer<</Size {len(parts) + 1}/Root 1 0 R>>\n".encode()


class Steering(House):
    pace = 40_000

    def begin(self):
        number = self.send(PLOT)
        self.paper_is_in()
        self.await_bytes(10_000)
        return number

    def await_bytes(self, count, queue="a"):
        until(lambda: len(self.taps[queue].heard) > count, "bytes at the plotter")

    def completes(self, number, heard=WHOLE):
        job = self.await_job(number, *ENDED)
        self.assertEqual((job["job-state"], self.taps["a"].heard == heard, self.reasons()), (COMPLETED, True, "none"), job)

    def test_cancel(self):
        number = self.begin()
        self.ipp("Cancel-Job", f"ATTR integer job-id {number}")
        self.await_job(number, CANCELED)
        self.await_rest()
        heard = self.taps["a"].heard
        self.assertLess(len(heard), len(WHOLE))
        self.assertRegex(heard, b"PU;SP0;$")

    def test_pauses_lose_nothing(self):
        number = self.begin()
        for pause, resume in ((lambda: self.ipp("Pause-Printer"), lambda: self.ipp("Resume-Printer")),
                              (lambda: self.act("pause", number), lambda: self.act("go-on", number))):
            pause()
            until(lambda: 'value="go-on"' in self.page()[1], "a pause")
            self.await_rest()
            rested = len(self.taps["a"].heard)
            resume()
            self.await_bytes(rested)
        self.completes(number)

    def test_jobs_are_plotted_as_they_came(self):
        (small := self.folder / "small.plt").write_text("IN;SP1;PU0,0;PD400,400;PU;SP0;")
        for number in [self.send(small) for _ in range(4)]:
            self.paper_is_in()
            self.await_job(number, COMPLETED)

    def test_jobs_canceled_as_they_begin_hold_up_none(self):
        head = "GROUP operation-attributes-tag ATTR charset attributes-charset utf-8 ATTR language attributes-natural-language en ATTR uri printer-uri $uri ATTR name requesting-user-name me"
        (small := self.folder / "small.plt").write_text("IN;SP1;PU0,0;PD400,400;PU;SP0;")
        (pairs := self.folder / "pairs.test").write_text(100 * f"""{{ OPERATION Print-Job {head} FILE {small} EXPECT job-id }}
            {{ OPERATION Cancel-Job {head} ATTR integer job-id $job-id }}\n""")
        self.ipptool(pairs, "-t")
        number = self.send(small)
        self.await_question()
        self.assertEqual(self.taps["a"].heard, b"")
        self.paper_is_in()
        self.await_job(number, COMPLETED)
        until(lambda: not any(self.ipp("Get-Jobs")), "no job that waits")

    def test_lost_plotter(self):
        number = self.begin()
        self.taps["a"].unplug()
        self.await_question()
        self.assertEqual(set(self.reasons()), {"offline", "media-needed"})
        self.plug("a")
        self.paper_is_in()
        self.await_bytes(10_000)
        place = int(re.search(r"place (\d+)", self.lose(number))[1])
        self.act("from-here", number)
        self.await_job(number, *ENDED)
        heard = self.taps["a"].heard
        self.assertTrue(heard.endswith(WHOLE[place:]) and len(heard) < len(WHOLE) - place + 1000, heard[:200])  # from the stroke's beginning
        self.assertEqual(self.reasons(), "none")

    def lose(self, number):
        """The plotter goes away and comes back. Gives what is said of the job meanwhile."""
        self.taps["a"].unplug()
        self.await_question()
        self.plug("a")
        return self.job(number)["job-state-message"]

    def test_absent_plotter(self):
        for state, end in ((COMPLETED, lambda _: self.plug("a")),
                           (CANCELED, lambda number: self.ipp("Cancel-Job", f"ATTR integer job-id {number}"))):
            self.taps["a"].unplug()
            number = self.send(PLOT)
            self.paper_is_in()
            until(lambda: "begins when the plotter is there" in self.job(number)["job-state-message"], "a wait for the plotter")
            end(number)
            self.assertEqual(self.await_job(number, *ENDED)["job-state"], state)


class Pens(House):
    profile = "--no-confirm --pens-held 1"

    def test_a_person_changes_them(self):
        (two := self.folder / "two.plt").write_text("IN;SP1;PU0,0;PD400,400;PU;SP2;PD800,0;PU;SP0;")
        for go_on in (lambda _: self.ipp("Resume-Printer"), lambda number: self.act("go-on", number)):
            number = self.send(two)
            self.await_question()
            self.assertRegex(self.job(number)["job-state-message"], "^Put in pen 2: .* then go on.$")
            go_on(number)
            self.await_job(number, COMPLETED)


class Strangers(House):
    """Who is no user of the page, and what is no document."""

    def test_the_page_is_for_its_own_forms(self):
        session = self.session(self.page()[1])
        form, upload = f"queue=a&job=1&action=stop&session={session}", f"/upload?queue=a&session={session}"
        for status, method, path, body, headers in (
                (200, "GET", "/", None, {}),
                (303, "POST", "/do", form, {"Origin": f"http://localhost:{self.port}"}),
                (400, "GET", "/", None, {"Host": "plotter.example"}),
                (403, "POST", "/do", form, {"Origin": "http://plotter.example"}),
                (403, "POST", "/do", form.replace(session, "0" * 64), {}),
                (413, "POST", "/do", form + "&more=" + "x" * 20_000, {}),
                (404, "GET", "/picture?queue=a&job=../../../etc/passwd", None, {}),
                (404, "GET", "/../../../../etc/passwd", None, {}),
                (200, "POST", upload, WHOLE, {}),
                (403, "POST", "/upload?queue=a", WHOLE, {}),
                (403, "POST", upload.replace("=a", "=../a"), WHOLE, {}),
                (411, "POST", upload, [WHOLE], {"Transfer-Encoding": "chunked"}),
                (413, "POST", upload, b"IN;", {"Content-Length": "100000001"}),
                (415, "POST", upload, b"\x89PNG\r\n\x1a\n", {})):
            with self.subTest(f"{method} {path} {headers}"):
                self.assertEqual(self.page(method, path, body, headers)[0], status)
        with socket.create_connection(("localhost", self.port)) as cut:
            cut.sendall(f"POST {upload} HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1000\r\n\r\nIN;SP1;".encode())
            cut.shutdown(socket.SHUT_WR)
            self.assertIn(b" 400 ", cut.recv(1000))
        self.assertEqual(len(list((self.folder / "state" / "spool").iterdir())), 1)  # of the one that was taken

    def test_what_grows_when_it_is_unpacked_is_refused(self):
        (zeros := self.folder / "zeros.plt").touch()
        os.truncate(zeros, 101_000_000)
        test = self.folder / "bomb.test"
        test.write_text(f"""{{ OPERATION Print-Job COMPRESSION gzip GROUP operation-attributes-tag ATTR charset attributes-charset utf-8
            ATTR language attributes-natural-language en ATTR uri printer-uri $uri ATTR keyword compression gzip FILE {zeros} }}""")
        self.ipptool(test, "-t", check=False)
        until(lambda: not any(self.ipp("Get-Jobs")), "no job that waits")
        self.assertLess(sum(file.stat().st_size for file in (self.folder / "state" / "spool").iterdir()), 1_000_000)
        self.assertEqual(self.await_job(self.send(PLOT), PROCESSING)["job-state"], PROCESSING)  # it serves on


class Elsewhere(House):
    """Another computer: a network namespace, joined with this one by two ends of a cable."""

    def setUp(self):
        number = os.getpid() % 16384  # of the addresses for trials of networks
        here, self.there = (f"198.18.{number // 64}.{number % 64 * 4 + i}" for i in (1, 2))
        self.name, end = f"orb{os.getpid()}", f"orbl{number}"
        try:
            for words in (f"netns add {self.name}", f"link add {end} type veth peer name cable netns {self.name}",
                          f"address add {here}/30 dev {end}", f"link set {end} up",
                          f"-n {self.name} address add {self.there}/30 dev cable", f"-n {self.name} link set cable up"):
                subprocess.run(["ip", *words.split()], check=True, capture_output=True)
                if "netns add" in words:
                    self.addCleanup(subprocess.run, ["ip", "netns", "delete", self.name], check=False)
        except (OSError, subprocess.CalledProcessError):
            self.skipTest("this user can make no network")
        self.here = here

    def from_there(self, *words):
        return subprocess.run(["ip", "netns", "exec", self.name, *map(str, words)], capture_output=True, text=True, timeout=60, check=False)

    def status(self, path, body=None):
        code = f"""import http.client
c = http.client.HTTPConnection({self.here!r}, {self.port}, timeout=20)
c.request({'POST' if body else 'GET'!r}, {path!r}, {body!r})
print(c.getresponse().status)"""
        said = self.from_there("python3", "-c", code)
        return said.stdout.strip() or said.stderr.splitlines()[-1].split(":")[0]

    def test_nothing_is_open_unless_shared(self):
        super().setUp()
        self.assertEqual(self.status("/"), "ConnectionRefusedError")

    def test_shared_is_printing_alone(self):
        self.options = ["--share"]
        super().setUp()
        number = self.send(PLOT)
        self.await_question()
        session = self.session(self.page()[1])
        for path, body in (("/", None), (f"/picture?queue=a&job={number}", None), ("/page.js", None),
                           ("/do", f"queue=a&job={number}&action=paper-is-in&session={session}"), (f"/upload?queue=a&session={session}", "IN;")):
            self.assertEqual(self.status(path, body), "403", path)
        uri = f"ipp://{self.here}:{self.port}/ipp/print/a"
        test = self.folder / "there.test"
        for operation, status in (("Pause-Printer", "client-error-forbidden"), ("Resume-Printer", "client-error-forbidden"),
                                  ("Get-Printer-Attributes", "successful-ok")):
            test.write_text(f"""{{ OPERATION {operation} GROUP operation-attributes-tag ATTR charset attributes-charset utf-8
                ATTR language attributes-natural-language en ATTR uri printer-uri $uri }}""")
            self.assertIn(f"status-code = {status} ", self.from_there("ipptool", "-tv", uri, test).stdout, operation)
        self.assertIn("[PASS]", self.from_there("ipptool", "-tf", PLOT, "-d", f"filetype={HPGL}", uri, IPPTOOL_TESTS / "print-job.test").stdout)
        self.assertEqual(self.taps["a"].heard, b"")


class Restart(House):
    pace = 40_000

    def test_names(self):
        names = ['say "moon"\nNextJobId 7\r\n<Printer id="9">', "m" * 1000, "\\ ' ä € <img>"]
        for name in names:
            self.send(PLOT, name=name)
        self.restart(signal.SIGTERM)
        self.assertEqual([job["job-name"] for job in self.jobs()],
                         ["say \"moon\" NextJobId 7  <Printer id=\"9\">", "m" * 200, names[2]])
        self.assertNotIn("<img>", self.page()[1])

    def jobs(self):
        found = self.ipp("Get-Jobs", "ATTR keyword which-jobs all ATTR keyword requested-attributes job-id,job-name,job-state")
        return sorted((job for job in found if job), key=lambda job: job["job-id"])

    def restart(self, number):
        self.end(self.program, number)
        self.start()

    def test_no_job_is_lost_or_plotted_unasked(self):
        chance = random.Random(seed := int(os.environ.get("ORB_SEED", time.time())))
        sent = {}  # number: name, and when the client had it
        for turn in range(int(os.environ.get("ORB_ROUNDS", 3))):
            for i in range(chance.randrange(1, 3)):
                number = self.send(PLOT, name=(name := f"drawing {turn}-{i}"))
                self.assertNotIn(number, sent, f"seed {seed}: given twice")
                sent[number] = name, time.monotonic()
            if chance.random() < 0.7:
                self.paper_is_in()
            time.sleep(chance.uniform(0, 2))
            killed, how = time.monotonic(), chance.choice((signal.SIGTERM, signal.SIGKILL))
            self.restart(how)
            self.await_rest()
            heard, found = self.taps["a"].heard, {job["job-id"]: job for job in self.jobs()}
            what = f"seed {seed}, round {turn}, signal {how}: sent {sent}, found {found}"
            for number, (name, when) in list(sent.items()):
                if number in found or how == signal.SIGTERM or killed - when > 1:
                    self.assertEqual(found.get(number, {}).get("job-name"), name, what)
                else:
                    del sent[number]  # it was lost before its second had passed, and is not to come back
            self.assertLessEqual(set(found), set(sent), what)
            waiting = [number for number, job in found.items() if job["job-state"] not in ENDED]
            if waiting:
                self.await_question()
            self.assertEqual(sum(job["job-state"] == PROCESSING for job in self.jobs()), min(1, len(waiting)), what)
            self.assertEqual(len(self.taps["a"].heard), len(heard), what)
            for number in waiting if chance.random() < 0.5 else []:
                self.ipp("Cancel-Job", f"ATTR integer job-id {number}")
                self.await_job(number, CANCELED)


class Load(House):
    """Not among the usual tests: script/test-long."""
    queues, profile = ("a", "b"), "--no-confirm"

    def test_many_jobs(self):
        small = self.folder / "small.plt"
        small.write_bytes(b"IN;SP1;" + b"PU0,0;PD400,400;" * 62 + b"SP0;")
        took, done = [], threading.Event()

        def watch():
            while not done.wait(0.1):
                began = time.monotonic()
                self.page()
                took.append(time.monotonic() - began)
        watching = threading.Thread(target=watch)
        watching.start()
        self.addCleanup(done.set)
        memory = []
        for _ in range(2):
            for queue in self.queues * 50:
                self.send(small, queue=queue)
            for queue in self.queues:
                until(lambda: not any(self.ipp("Get-Jobs", queue=queue)), f"an empty queue {queue}", 300)
            memory.append(int(re.search(r"VmRSS:\s*(\d+)", Path(f"/proc/{self.program.pid}/status").read_text())[1]))
        done.set()
        watching.join()
        slow = 1000 * sorted(took)[int(len(took) * 0.99)]
        print(f"memory: {memory[0]} kB after 100 jobs, {memory[1]} kB after 200; 99 of 100 pages within {slow:.0f} ms")
        for queue in self.queues:
            self.assertTrue(self.taps[queue].heard == small.read_bytes() * 100, queue)
        self.assertLess(memory[1] - memory[0], 5000)
        self.assertLess(slow, 1000)


if __name__ == "__main__":
    unittest.main()
