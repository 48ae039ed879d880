"""What bad input, a bad machine and a bad mail server get: the report, the log and nothing more."""

import resource
import time

from machine import COMMAND, DATA_SOURCE, MAIL, PRODUCT, RUNNING, SchedulerTest, unfinished_block

REJECTED_SQL = -2147217900


class Machine(SchedulerTest):
    def setUp(self):
        super().setUp()
        self.server = self.start_mail_server()
        self.add_client("ann@example.com")

    def assert_nothing_sent(self):
        self.assertEqual(self.server.messages, [])

    def test_malformed_registry_file(self):
        head = "Windows Registry Editor Version 5.00\r\n\r\n"
        key = head + "[HKEY_LOCAL_MACHINE\\Software]\r\n"
        self.registry = None
        for text, line in (
                ("Not a registry file\r\n", 1),
                (head + "[HKEY_LOCAL_MACHINE\\Software\r\n", 3),
                (key + '"Name"="no end\r\n', 4),
                (key + '"Good"="yes"\r\n"Name"=dword:xyz\r\n', 5),
                (key + '"Name"=hex(2):25,0g\r\n', 4),
                (head + '"Name"="before any key"\r\n', 3)):
            with self.subTest(text=text):
                self.write_file("agency.reg", text)
                result = self.run_scheduler()
                self.assert_stopped(result, 321, "agency.reg", f"line {line}")
        self.assert_no_log()
        self.assert_nothing_sent()

    def test_missing_registry_file_gives_the_defaults(self):
        self.registry = None
        self.assert_stopped(self.run_scheduler(), 3709)
        self.log_file = self.folder / "work" / "Data" / "PXScheduler.log"
        self.assert_log(*unfinished_block(RUNNING))

    def test_data_folder_setting_always_stops_the_run(self):
        for value in (r"[PROGRAM PATH]\Logs", str(self.folder / "logs"), " "):
            self.registry[PRODUCT] = {"DataFolder": value}
            for switches in (COMMAND, COMMAND + " /NOLOG", ""):
                self.assert_stopped(self.run_scheduler(switches), 424, "Object required")
        self.assertFalse((self.folder / "logs").exists())
        self.assert_no_log()
        self.assert_nothing_sent()

    def test_log_that_cannot_be_opened(self):
        self.log_file.mkdir(parents=True)
        result = self.run_scheduler()
        self.assert_stopped(result, "(70|75)", "PXScheduler.log")
        self.assert_stopped(self.run_scheduler(""), "(70|75)")
        self.assert_nothing_sent()
        self.assert_ended_well(self.run_scheduler(COMMAND + " /NOLOG"))
        self.assertEqual(len(self.server.messages), 1)

    def test_data_folder_that_cannot_be_made(self):
        self.write_file("home/Documents", "a file in the way")
        self.assert_stopped(self.run_scheduler(), "(70|75|76)")
        self.assert_nothing_sent()

    def test_log_on_a_full_disk(self):
        self.log_file.parent.mkdir(parents=True)
        self.log_file.symlink_to("/dev/full")
        self.assert_stopped(self.run_scheduler(), 61)
        self.assert_nothing_sent()

    def test_log_that_fills_the_disk_while_running(self):
        for name in ("bob", "carl", "dora"):
            self.add_client(name + "@example.com")
        lines = [*unfinished_block(RUNNING), "Sent: ann@example.com", "Sent: bob@example.com"]
        old = b"x" * 100000 + b"\r\n"
        written = old + "".join(line + "\r\n" for line in lines).encode()
        limit = len(written) + 10
        self.log_file.parent.mkdir(parents=True)
        self.log_file.write_bytes(old)
        result = self.run_scheduler(
            # What goes over the limit is an error of the write, as on a full disk, not a signal.
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)),
            restore_signals=False)
        self.assert_stopped(result, "(61|75)")
        self.assertLessEqual(len(self.server.messages), 3)
        self.assertTrue(self.log_file.read_bytes().startswith(written))


class Database(SchedulerTest):
    def setUp(self):
        super().setUp()
        self.server = self.start_mail_server()
        self.add_client("ann@example.com")

    def assert_stopped_while_running(self, number, *words):
        self.log_file.unlink(missing_ok=True)
        self.assert_stopped(self.run_scheduler(), number, *words)
        self.assert_log(*unfinished_block(RUNNING))
        self.assertEqual(self.server.messages, [])

    def test_database_that_cannot_be_opened(self):
        for server in ("sqlite:" + str(self.folder / "missing.db"),
                       "sqlite:" + str(self.folder), "sqlite:" + str(self.body_file), "sqlite:"):
            with self.subTest(server=server):
                self.registry[DATA_SOURCE]["Server"] = server
                self.assert_stopped_while_running(3709)
        self.assertFalse((self.folder / "missing.db").exists())

    def test_database_is_never_written(self):
        self.save_query("DELETE FROM Clients")
        self.assert_stopped(self.run_scheduler(), "-2147[0-9]+")
        self.assertEqual(self.database.execute("SELECT COUNT(*) FROM Clients").fetchone(), (1,))

    def test_statements_that_are_rejected(self):
        for sql in ("SELEKT * FROM Clients", "SELECT * FROM Nobody", "SELECT Nothing FROM Clients",
                    "[TODAY]", "SELECT * FROM Clients WHERE FirstName='no end"):
            with self.subTest(sql=sql):
                self.save_query(sql)
                self.assert_stopped_while_running(REJECTED_SQL)

    def test_lock_time_out_that_is_not_a_number(self):
        self.registry[PRODUCT] = {"LockTimeout": "a while"}
        self.assert_stopped_while_running(REJECTED_SQL)

    def test_missing_columns(self):
        # The sort needs the address even where there are no rows; the rest is read with a row.
        for sql in ("SELECT SendEmail, FirstName FROM Clients WHERE 1=0",
                    "SELECT Email, FirstName FROM Clients",
                    "SELECT Email, SendEmail, FullName FROM Clients"):
            with self.subTest(sql=sql):
                self.save_query(sql)
                self.assert_stopped_while_running(3265)

    def test_missing_columns_matter_only_for_a_row_that_is_mailed(self):
        self.save_query("SELECT Email, 0 AS SendEmail FROM Clients")
        self.assert_ended_well(self.run_scheduler())
        self.assert_sent()

    def test_single_day_beside_a_birthday(self):
        self.save_query("SELECT * FROM Clients WHERE DAY(Birthdate) IN [3 DAYS AGO]")
        self.assert_stopped_while_running(13, "Type mismatch")

    def test_macro_without_a_column_never_ends(self):
        self.save_query("SELECT * FROM Clients WHERE Profile IN [NEXT7DAYS]")
        process = self.start()
        try:
            time.sleep(1)
            self.assertIsNone(process.poll(), "ended before it was stopped")
        finally:
            process.kill()
            process.communicate()
        self.assert_log(*unfinished_block(RUNNING))


class Template(SchedulerTest):
    def test_template_that_cannot_be_converted(self):
        server = self.start_mail_server()
        self.add_client("ann@example.com")
        header = b"\0" * 30
        for content in (None, b"", b"{\\rtf1 short}", header[1:], header + b"\x01\x02\x03unknown",
                        header + b"\x89PNG\r\n\x1a\n\0\0"):
            with self.subTest(content=content):
                self.body_file = self.folder / "work" / "bad.qzw"
                self.body_file.unlink(missing_ok=True)
                if content is not None:
                    self.body_file.write_bytes(content)
                self.log_file.unlink(missing_ok=True)
                self.assert_stopped(self.run_scheduler(), "[0-9]+", "bad.qzw")
                self.assert_log(*unfinished_block(RUNNING))
        self.assertEqual(server.messages, [])

    def test_quotation_marks_belong_to_the_name(self):
        self.start_mail_server()
        self.write_file("work/letter.qzw", b"\0" * 30 + b"{\\rtf1 Dear}")
        self.assert_stopped(
            self.run_scheduler("/QMailing /SHello '/F\"letter.qzw'"), "[0-9]+", '"letter.qzw')


class Mail(SchedulerTest):
    def setUp(self):
        super().setUp()
        self.add_client("ann@example.com")

    def test_settings_that_cannot_be_read(self):
        for settings, number in (({"EmailAuthenticate": "perhaps"}, 13),
                                 ({"EmailAuthenticate": ""}, 13),
                                 ({"EmailServer": "127.0.0.1:99999999999"}, 6)):
            with self.subTest(settings=settings):
                self.log_file.unlink(missing_ok=True)
                saved = dict(self.registry[MAIL])
                self.registry[MAIL].update(settings)
                self.assert_stopped(self.run_scheduler(), number)
                self.registry[MAIL] = saved
                self.assert_log(*unfinished_block(RUNNING))

    def assert_outcome(self, *lines):
        self.log_file.unlink(missing_ok=True)
        result = self.run_scheduler()
        self.assert_ended_well(result)
        self.assert_sent(*lines)

    def test_servers_that_cannot_be_reached(self):
        for server, text in (
                ("", "No mail server specified."),
                ("127.0.0.1:9", "There was an error connecting to the SMTP mail server."),
                ("127.0.0.1:", "There was an error connecting to the SMTP mail server."),
                ("no..such..host", "Could not resolve host.")):
            with self.subTest(server=server):
                self.registry[MAIL]["EmailServer"] = server
                self.assert_outcome("Failed: ann@example.com", text)

    def test_servers_that_refuse_or_break_off(self):
        body = "An error has occurred due to a problem;with the message body or attachments."
        broken = "There was a problem with the connection;and a socket error occurred."
        for step, action, text in (
                ("greeting", "554 no", "Connected but server sent back bad response."),
                ("greeting", "garbage", "Connected but server sent back bad response."),
                ("MAIL", "550 no", "The from address was not formatted correctly or was rejected;"
                 "by the SMTP mail server. Some SMTP mail servers will only accept;mail from "
                 "particular addresses or domains. SMTP mail servers may;also reject a from "
                 "address if the server can not successfully do;a reverse lookup on the from address."),
                ("RCPT", "550 no", "An error was reported in response to a recipient address.;"
                 "The SMTP server may refuse to handle mail for unknown recipients."),
                ("DATA", "554 no", body),
                ("message", "554 no", body),
                ("message", "close", broken),
                ("RCPT", "reset", broken)):
            with self.subTest(step=step, action=action):
                self.start_mail_server(faults=[{"at": step, "do": action}])
                self.assert_outcome("Failed: ann@example.com", text)

    def test_neither_greeting_is_accepted(self):
        self.start_mail_server(
            faults=[{"at": step, "do": "502 no"} for step in ("EHLO", "HELO")])
        self.assert_outcome(
            "Failed: ann@example.com",
            "There was a problem initiating the conversation;with the mail server. Ensure the "
            "setting;of the Domain property is correct.")

    def test_logins_that_fail(self):
        secret = "S3cret"
        self.registry[MAIL].update(
            EmailAuthenticate="-1", EmailUser="office", EmailPassword=secret)
        for script, text in (
                ({"extensions": ["AUTH PLAIN LOGIN"], "users": {"office": "other"}},
                 "ESMTP Authentication failed."),
                ({"extensions": ["AUTH PLAIN"], "faults": [{"at": "AUTH", "do": "299 what"}],
                  "users": {"office": secret}}, "ESMTP Authentication protocol error."),
                ({}, "The selected ESMTP Authentication mode;is not supported by the server.")):
            with self.subTest(script=script):
                self.start_mail_server(**script)
                self.assert_outcome("Failed: ann@example.com", text)
                self.assertNotIn(secret.encode(), self.log_file.read_bytes())

    def test_a_failure_is_one_client_only(self):
        server = self.start_mail_server(faults=[{"at": "RCPT", "match": "bob@", "do": "550 no"}])
        for email in ("bob@example.com", "carl@example.com",
                      "eve@example.com>\r\nRCPT TO:<all@example.com"):
            self.add_client(email)
        refused = ("An error was reported in response to a recipient address.;"
                   "The SMTP server may refuse to handle mail for unknown recipients.")
        self.assert_outcome(
            "Sent: ann@example.com", "Failed: bob@example.com", refused, "Sent: carl@example.com",
            "Failed: eve@example.com>", "RCPT TO:<all@example.com", refused)
        self.assertEqual([message.envelope["to"] for message in server.messages],
                         [["ann@example.com"], ["carl@example.com"]])
