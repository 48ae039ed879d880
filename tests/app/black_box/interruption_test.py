"""What a run that is told to stop leaves behind, and runs beside one another."""

import random
import signal
import time

import wine
from machine import SEPARATOR, SchedulerTest

CLIENTS = [f"client{number:02}@example.com" for number in range(40)]


@wine.not_under("signals end Wine itself")
class Stop(SchedulerTest):
    def setUp(self):
        super().setUp()
        for client in CLIENTS:
            self.add_client(client)

    def sent_in_log(self):
        return [line[len("Sent: "):] for line in self.log_file.read_text().splitlines()
                if line.startswith("Sent: ")]

    def test_at_any_moment_the_log_knows_what_was_sent(self):
        chance = random.Random(1)
        early = 0
        for number in range(12):
            server = self.start_mail_server()
            process = self.start()
            time.sleep(chance.uniform(0.02, 0.2))
            stop = chance.choice((signal.SIGTERM, signal.SIGINT))
            process.send_signal(stop)
            _, errors = process.communicate(timeout=60)
            with self.subTest(number=number, stop=stop):
                # Before the first message the process just ends.
                self.assertIn(process.returncode, (0, -stop, 128 + stop))
                recipients = [message.envelope["to"][0] for message in server.messages]
                sent = self.sent_in_log() if self.log_file.exists() else []
                self.assertEqual(sorted(sent), sorted(recipients))
                self.assertEqual(len(set(sent)), len(sent))
                if process.returncode == 128 + stop:
                    early += 1
                    self.assertRegex(errors, r"Stopped on request: \d+ messages sent, 0 failed")
                    self.assertNotIn("Query finished", self.log_file.read_text())
            self.log_file.unlink(missing_ok=True)
        self.assertGreater(early, 0)


class Beside(SchedulerTest):
    def test_each_run_mails_its_own_letter(self):
        server = self.start_mail_server()
        for number in range(8):
            self.write_file(f"work/letter{number}.qzw", b"\0" * 30 + b"{\\rtf1 Letter %d}" % number)
            self.add_client(f"client{number}@example.com")
            self.save_query(
                f"SELECT * FROM Clients WHERE Email='client{number}@example.com'", f"Job {number}")
        jobs = [self.start(f"'/QJob {number}' /SHello /Fletter{number}.qzw")
                for number in range(8)]
        for job in jobs:
            _, errors = job.communicate(timeout=60)
            self.assertEqual((job.returncode, errors), (0, ""))
        self.assertEqual(sorted((message.envelope["to"][0], message.text.strip())
                                for message in server.messages),
                         [(f"client{number}@example.com", f"Letter {number}")
                          for number in range(8)])
        self.assertEqual(self.log_file.read_text().count(SEPARATOR), 8 * 4)
