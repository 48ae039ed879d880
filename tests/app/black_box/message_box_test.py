"""The message boxes of the Windows executable, on the display that DISPLAY names."""

import os
import shlex
import subprocess

from machine import COMMAND, USAGE, SchedulerTest

CAPTION = "Vantreo Scheduler"


class MessageBoxes(SchedulerTest):
    def environment(self, now):
        return {**super().environment(now), "DISPLAY": os.environ["DISPLAY"]}

    def run_with_box(self, command_line, warning=""):
        """The status of a run, and what stood in the box that it showed, which is answered with OK."""
        answer = [*shlex.split(os.environ["ANSWER_MESSAGE_BOX"]), CAPTION]
        with subprocess.Popen(answer, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              encoding="utf-8") as answering:
            result = self.run_scheduler(command_line)
            shown, _ = answering.communicate(timeout=60)
        self.assertEqual(result.stdout, "")
        self.assertRegex(result.stderr, rf"\A{warning}\Z")
        return result.returncode, shown

    def test_usage(self):
        status, shown = self.run_with_box("/QMailing")
        self.assertEqual(status, 0)
        self.assertCountEqual(shown.splitlines(), ["Static: " + USAGE, "Button: OK"])

    def test_error_report(self):
        self.save_query("SELECT Missing FROM Clients")
        status, shown = self.run_with_box(COMMAND, "The query, .*: SELECT Missing FROM Clients\n")
        self.assertEqual(status, 1)
        self.assertIn("Button: OK\n", shown)
        self.assertEqual(shown.count("Button: "), 1)
        self.assertRegex(shown, r"(?s)Static: .*-2147217900.*Invalid column name 'Missing'")
