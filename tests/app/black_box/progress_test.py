"""What whoever watches a run on a terminal sees."""

import os
import pty
import re
import resource
import time
import tty

import wine
from machine import SchedulerTest

REDRAWINGS_PER_SECOND = 10


@wine.not_under("Wine has a console of its own")
class Progress(SchedulerTest):
    def run_on_terminal(self, **options):
        """Runs with standard error on a terminal that changes nothing of what it gets; returns the
        status, what the terminal got, and how long that took."""
        screen, terminal = pty.openpty()
        with open(screen, "rb", buffering=0) as screen:
            tty.setraw(terminal)
            started = time.monotonic()
            process = self.start(stderr=terminal, **options)
            os.close(terminal)
            shown = b"".join(iter(lambda: self.read_screen(screen), b""))
            output, _ = process.communicate(timeout=60)
        self.assertEqual(output, "")
        return process.returncode, shown.decode(), time.monotonic() - started

    @staticmethod
    def read_screen(screen):
        try:
            return screen.read(4096)
        except OSError:  # nobody has the terminal open any more
            return b""

    def drawings(self, line, count):
        """The sent, failed and done of each time that the line was drawn."""
        self.assertRegex(line, rf"\A(\rSent \d+, failed \d+, \d+ of {count} clients)+\Z")
        return [tuple(map(int, re.findall(r"\d+", drawing)[:3]))
                for drawing in line.split("\r")[1:]]

    def test_one_line_counts_the_clients(self):
        self.start_mail_server(faults=[{"at": "RCPT", "match": "client150@", "do": "550 no"}])
        for number in range(298):
            self.add_client(f"client{number:03}@example.com")
        self.add_client("client000@EXAMPLE.com")  # the same again
        self.add_client("client298@example.com", SendEmail=0)
        status, shown, seconds = self.run_on_terminal()
        self.assertEqual(status, 0)
        shown, warnings = re.subn(r"\nMail to client150.*\n", "", shown)
        self.assertEqual((shown[-1:], warnings), ("\n", 1))
        drawings = self.drawings(shown[:-1], 300)
        self.assertEqual(drawings[-1], (297, 1, 300))
        self.assertEqual(drawings, sorted(drawings))
        # The first and the last are drawn at once.
        self.assertLessEqual(len(drawings), 2 + REDRAWINGS_PER_SECOND * seconds)
        self.assertEqual(self.log_file.read_text().count("Sent: "), 297)

    def test_no_line_without_clients(self):
        self.assertEqual(self.run_on_terminal()[:2], (0, ""))

    def test_an_error_report_starts_on_a_line_of_its_own(self):
        self.start_mail_server()
        for number in range(100):
            self.add_client(f"client{number:03}@example.com")
        limit = 1000  # the log reaches it in the middle of the run
        status, shown, _ = self.run_on_terminal(
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)),
            restore_signals=False)
        self.assertEqual(status, 1)
        line, report = shown.split("\n", 1)
        sent, failed, done = self.drawings(line, 100)[-1]
        self.assertTrue(0 < sent == done < 100 and failed == 0, line)
        self.assertTrue(report.startswith("Vantreo Scheduler\n"), report)
