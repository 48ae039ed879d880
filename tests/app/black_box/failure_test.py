"""What bad input, a bad machine and a bad mail server get: the report, the log and nothing more."""

import resource
import time

import wine
from machine import (
    COMMAND, DATA_SOURCE, MAIL, PRODUCT, RUNNING, SchedulerTest, log_block, unfinished_block)

REJECTED_SQL = -2147217900


class FailureTest(SchedulerTest):
    def setUp(self):
        super().setUp()
        self.server = self.start_mail_server()
        self.add_client("ann@example.com")

    def assert_nothing_sent(self):
        self.assertEqual(self.server.messages, [])

    def assert_stopped_while_running(self, number, *words):
        self.assert_stopped(self.run_scheduler(), number, *words)
        self.assert_log(*unfinished_block(RUNNING))
        self.assert_nothing_sent()


class Machine(FailureTest):
    @wine.not_under("Windows has a registry")
    def test_malformed_registry_file(self):
        self.registry = None
        self.write_file("agency.reg", "Not a registry file\r\n")
        self.assert_stopped(self.run_scheduler(), 321, "agency.reg", "line 1")
        self.assertFalse(self.log_file.exists())
        self.assert_nothing_sent()

    def test_missing_registry_file_gives_the_defaults(self):
        self.registry = None
        self.log_file = self.folder / "work" / "Data" / "PXScheduler.log"
        self.assert_stopped_while_running(3709)

    def test_data_folder_setting_always_stops_the_run(self):
        for value in (r"[PROGRAM PATH]\Logs", str(self.folder / "logs"), " "):
            self.registry[PRODUCT] = {"DataFolder": value}
            for switches in (COMMAND, COMMAND + " /NOLOG", ""):
                self.assert_stopped(self.run_scheduler(switches), 424, "Object required",
                                    '"DataFolder" under ' + PRODUCT, "agency.reg", "remove it")
        self.assertFalse((self.folder / "logs").exists())
        self.assertFalse(self.log_file.exists())
        self.assert_nothing_sent()

    def test_log_that_cannot_be_opened(self):
        self.log_file.mkdir(parents=True)
        self.assert_stopped(self.run_scheduler(), "(70|75)", "PXScheduler.log")
        self.assert_stopped(self.run_scheduler(""), "(70|75)")
        self.assert_nothing_sent()
        self.assert_ended_well(self.run_scheduler(COMMAND + " /NOLOG"))
        self.assertEqual(len(self.server.messages), 1)

    def test_data_folder_that_cannot_be_made(self):
        self.write_file("home/Documents", "a file in the way")
        self.assert_stopped(self.run_scheduler(), "(70|75|76)", "could not be made",
                            self.path_text(self.log_file.parent.parent))
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
        # No message is sent before the outcome of the one before is in the log.
        self.assertLessEqual(len(self.server.messages), 3)
        self.assertTrue(self.log_file.read_bytes().startswith(written))


class Database(FailureTest):
    def test_database_that_cannot_be_opened(self):
        self.registry[DATA_SOURCE]["Server"] = "sqlite:" + str(self.folder / "missing.db")
        self.assert_stopped_while_running(
            3709, '"Sunset Travel"', "missing.db", '(data source "agency")', "there is no such file")
        self.assertFalse((self.folder / "missing.db").exists())

    def test_statements_that_are_rejected(self):
        for sql in ("SELEKT * FROM Clients", "[TODAY]"):
            with self.subTest(sql=sql):
                self.save_query(sql)
                self.assert_stopped_while_running(REJECTED_SQL, "macros expanded: ")

    def test_lock_time_out_that_is_not_a_number(self):
        self.registry[PRODUCT] = {"LockTimeout": "a while"}
        self.assert_stopped_while_running(REJECTED_SQL, '"LockTimeout" under', '"a while"')

    def test_missing_columns(self):
        # The sort needs the address even where there are no rows; the rest is read with a row.
        for sql in ("SELECT SendEmail, FirstName FROM Clients WHERE 1=0",
                    "SELECT Email, FirstName FROM Clients",
                    "SELECT Email, SendEmail, FullName FROM Clients"):
            with self.subTest(sql=sql):
                self.save_query(sql)
                self.assert_stopped_while_running(3265, "The query gives no column", '"FirstName"'
                                                  if "FirstName" in sql else '"FullName"')

    def test_missing_columns_matter_only_for_a_row_that_is_mailed(self):
        self.save_query("SELECT Email, 0 AS SendEmail FROM Clients")
        self.assert_sends()

    def test_row_that_ends_the_run_takes_no_outcome_with_it(self):
        self.add_client("bob@example.com")
        self.add_client("carl@example.com", SendEmail="perhaps")
        self.assert_stopped(self.run_scheduler(), 13, '"SendEmail"', "carl@", '"perhaps"')
        self.assert_log(
            *unfinished_block(RUNNING, "Sent: ann@example.com", "Sent: bob@example.com"))

    def test_single_day_beside_a_birthday(self):
        self.save_query("SELECT * FROM Clients WHERE DAY(Birthdate) IN [3 DAYS AGO]")
        self.assert_stopped_while_running(13, "Type mismatch", "macro of a single day")

    def test_macro_without_a_column_never_ends(self):
        self.save_query("SELECT * FROM Clients WHERE Profile IN [NEXT7DAYS]")
        process = self.start()
        self.assertIn("never ends", process.stderr.readline())
        time.sleep(0.2)
        self.assertIsNone(process.poll(), "ended by itself")
        self.assert_log(*unfinished_block(RUNNING))


class Template(FailureTest):
    def test_template_that_cannot_be_converted(self):
        for content in (None, b"\0" * 30 + b"\x01\x02\x03unknown"):
            with self.subTest(content=content):
                self.body_file = self.folder / "work" / "bad.qzw"
                if content is not None:
                    self.body_file.write_bytes(content)
                self.assert_stopped_while_running("[0-9]+", "bad.qzw")

    def test_quotation_marks_belong_to_the_name(self):
        self.write_file("work/letter.qzw", b"\0" * 30 + b"{\\rtf1 Dear}")
        self.assert_stopped(
            self.run_scheduler("/QMailing /SHello '/F\"letter.qzw'"), "[0-9]+", '"letter.qzw')


class Mail(SchedulerTest):
    def setUp(self):
        super().setUp()
        self.add_client("ann@example.com")

    def test_settings_that_cannot_be_read(self):
        settings = self.registry[MAIL]
        for name, value, number in (("EmailServer", "127.0.0.1:99999999999", 6),
                                    ("EmailAuthenticate", "perhaps", 13)):
            with self.subTest(name):
                self.registry[MAIL] = {**settings, name: value}
                self.assert_stopped(self.run_scheduler(), number, f'"{name}" under {MAIL}',
                                    f'"{value}"')
                self.assert_log(*unfinished_block(RUNNING))

    def test_servers_that_cannot_be_reached(self):
        for server, text, *warning in (
                ("", "No mail server specified.", '"EmailServer" under ' + MAIL),
                ("127.0.0.1:9", "There was an error connecting to the SMTP mail server.",
                 "127.0.0.1 port 9: no connection"),
                ("no..such..host", "Could not resolve host.", "no..such..host")):
            with self.subTest(server=server):
                self.registry[MAIL]["EmailServer"] = server
                self.assert_sends("Failed: ann@example.com", text, warning=warning)

    def test_servers_that_refuse_or_break_off(self):
        for steps, action, text in (
                ("greeting", "554 no", "Connected but server sent back bad response."),
                ("EHLO HELO", "502 no", "There was a problem initiating the conversation;with the "
                 "mail server. Ensure the setting;of the Domain property is correct."),
                ("MAIL", "550 no", "The from address was not formatted correctly or was rejected;"
                 "by the SMTP mail server. Some SMTP mail servers will only accept;mail from "
                 "particular addresses or domains. SMTP mail servers may;also reject a from address"
                 " if the server can not successfully do;a reverse lookup on the from address."),
                ("RCPT", "550 no", "An error was reported in response to a recipient address.;"
                 "The SMTP server may refuse to handle mail for unknown recipients."),
                ("message", "554 no",
                 "An error has occurred due to a problem;with the message body or attachments."),
                ("message", "close",
                 "There was a problem with the connection;and a socket error occurred.")):
            with self.subTest(steps=steps, action=action):
                self.start_mail_server(
                    faults=[{"at": step, "do": action} for step in steps.split()])
                self.assert_sends("Failed: ann@example.com", text, warning=(
                    "the connection broke" if action == "close" else f'was answered "{action}"',))

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
                self.assert_sends("Failed: ann@example.com", text, warning=["by 127.0.0.1 port "])

    @wine.not_under("the settings are no file")
    def test_a_password_that_everybody_may_read_is_warned_of(self):
        self.registry[MAIL].update(EmailAuthenticate="-1", EmailUser="office", EmailPassword="x")
        self.registry_mode = 0o644
        self.start_mail_server(extensions=["AUTH PLAIN"], users={"office": "x"})
        self.assert_sends("Sent: ann@example.com",
                          warning=['"EmailPassword" under ' + MAIL, "agency.reg"])
        self.registry[MAIL]["EmailPassword"] = self.encipher("x")
        self.assert_sends("Sent: ann@example.com")

    def test_a_failure_is_one_client_only(self):
        server = self.start_mail_server(faults=[{"at": "RCPT", "match": "bob@", "do": "550 no"}])
        for email in ("bob@example.com", "carl@example.com",
                      "eve@example.com>\r\nRCPT TO:<all@example.com"):
            self.add_client(email)
        refused = ("An error was reported in response to a recipient address.;"
                   "The SMTP server may refuse to handle mail for unknown recipients.")
        result = self.run_scheduler()
        self.assertEqual(result.returncode, 0)
        self.assertRegex(result.stderr, r"\AMail to bob@example.com by .*: RCPT was answered .*\n"
                         r"Mail to eve@example.com>\?\?RCPT .*: the address is malformed\.\n\Z")
        self.assert_log(*log_block(
            RUNNING, "Sent: ann@example.com", "Failed: bob@example.com", refused,
            "Sent: carl@example.com", "Failed: eve@example.com>", "RCPT TO:<all@example.com",
            refused))
        self.assertEqual([message.envelope["to"] for message in server.messages],
                         [["ann@example.com"], ["carl@example.com"]])
