"""Whole runs against a SQL Server through the real driver."""

import json
import re
import subprocess
import sys
import time
from pathlib import Path

from machine import (
    COLUMNS, COMMAND, DATA_SOURCE, MAIL, PRODUCT, RUNNING, SchedulerTest, log_block,
    unfinished_block)

ROOT = Path(__file__).resolve().parents[3]
TDS_SERVER = ROOT / "tests" / "support" / "tds_server.py"
LOOKUP = "SELECT QueryString FROM MarketingQueries WHERE QueryName="
SHARED = " AND UserID=0"
OWNED = (" AND UserID=(SELECT UserID FROM Users WHERE (UserID=1 OR "
         "SUBSTRING(Permissions,200,1)='1') AND Login=")
QUERY = "SELECT * FROM Clients"
DIVIDE_BY_ZERO = {"error": [8134, 16, "Divide by zero error encountered."]}


def row_set(*addresses, then=()):
    """A scripted row set with one client for each address, then steps in the middle of the rows."""
    columns = [["SendEmail", "bit"], *([name, "nvarchar(120)"] for name in COLUMNS
                                       if name != "SendEmail")]
    rows = [[1, *(address if name == "Email" else "Ann" for name, _ in columns[1:])]
            for address in addresses]
    return {"columns": columns, "rows": [*rows, *then]}


class SqlServerTest(SchedulerTest):
    def start_sql_server(self, *arguments, answers=(), database="Sunset Travel"):
        """Serves the machine's database over TDS, and makes that the agency's data source."""
        script = self.write_file("answers.json", json.dumps(list(answers)).encode())
        self.server_log = self.folder / "sql server.log"
        server = subprocess.Popen(
            [sys.executable, TDS_SERVER, "--sqlite", self.folder / "agency.db", "--answers", script,
             "--log", self.server_log, "--database", database, *arguments],
            stdout=subprocess.PIPE, text=True)
        self.addCleanup(server.stdout.close)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        self.registry[DATA_SOURCE]["Server"] = f"127.0.0.1,{int(server.stdout.readline())}"
        return server

    def environment(self, now):
        return super().environment(now) | {
            "PXSCHEDULER_TEST_LOGIN_TIMEOUT": "1", "PXSCHEDULER_TEST_COMMAND_TIMEOUT": "1"}

    def logged(self, kind):
        """The logins or the statements that the server got, each as the fields of its line."""
        lines = self.server_log.read_text("utf-8").splitlines() if self.server_log.exists() else []
        return [line.split("\t")[1:] for line in lines if line.startswith(kind + "\t")]

    def statements(self):
        return [text for text, in self.logged("statement") if text != "SELECT DB_NAME()"]

    def passwords(self):
        return [password for _, password, *_ in self.logged("login")]


class Access(SqlServerTest):
    def test_statements_are_sent_as_specified(self):
        self.start_mail_server()
        self.start_sql_server()
        self.add_client("ann@example.com")
        for switches, lookup in (
                ("", "'Mailing'" + SHARED),
                ("/Ujsmith", "'Mailing'" + OWNED + "'jsmith')"),
                ("/UO'Brien", "'Mailing'" + OWNED + "'O''Brien')")):
            self.server_log.unlink(missing_ok=True)
            self.assert_ended_well(self.run_scheduler(f'{COMMAND} "{switches}"'))
            expected = ["SET LOCK_TIMEOUT 60000", LOOKUP + lookup]
            self.assertEqual(self.statements(), expected + ([QUERY] if not switches else []))
        self.server_log.unlink()
        self.registry[PRODUCT] = {"LockTimeout": "-1"}
        self.assert_ended_well(self.run_scheduler('"/QIt\'s ours" /SHello /F{body}'))
        self.assertEqual(self.statements(),
                         ["SET LOCK_TIMEOUT -1", LOOKUP + "'It''s ours'" + SHARED])

    def test_password_of_the_machine_then_the_fallback(self):
        self.start_mail_server()
        self.add_client("ann@example.com")
        secret = " {s=cret} \u00e9"
        self.keep_password(secret)
        for accepted, tried in ((secret, [secret]), ("tonal", [secret, "tonal"])):
            self.start_sql_server("--password", accepted)
            self.server_log.unlink(missing_ok=True)
            self.assert_ended_well(self.run_scheduler())
            self.assertEqual(self.passwords(), tried)
        self.assertEqual(self.logged("login")[-1],
                         ["appuser", "tonal", "Sunset Travel", "plain", "PXScheduler"])

    def test_what_cannot_be_opened_ends_the_run_at_the_lookup(self):
        cases = (
            ("both passwords refused", ("--password", "other"), "Sunset Travel", 2),
            ("no such database", (), "Other", 2),
            ("never an answer", ("--mute",), "Sunset Travel", 0),
        )
        expected = []
        for what, arguments, database, logins in cases:
            with self.subTest(what):
                server = self.start_sql_server(*arguments, database=database)
                self.server_log.unlink(missing_ok=True)
                start = time.monotonic()
                self.assert_stopped(self.run_scheduler(), 3709)
                self.assertLess(time.monotonic() - start, 10)
                self.assertEqual(len(self.passwords()), logins)
                expected += unfinished_block(RUNNING)
                self.assert_log(*expected)
        server.kill()
        server.wait()
        self.assert_stopped(self.run_scheduler(), 3709)
        self.assert_log(*expected, *unfinished_block(RUNNING))

    def test_mail_settings_are_those_of_the_current_database(self):
        mail_server = self.start_mail_server()
        self.registry[PRODUCT + r"\Other"] = self.registry.pop(MAIL)
        self.start_sql_server(answers=[{
            "statement": LOOKUP + "'Mailing'" + SHARED, "steps": [
                {"columns": [["QueryString", "ntext"]], "rows": [[QUERY]]}, {"database": "Other"}]}])
        self.add_client("ann@example.com")
        self.assert_ended_well(self.run_scheduler())
        self.assertEqual(len(mail_server.messages), 1)


class Results(SqlServerTest):
    def test_sample_agency_gives_what_it_gives_from_a_file(self):
        self.database.executescript(
            "DROP TABLE Clients; DROP TABLE Users; DROP TABLE MarketingQueries;"
            + (ROOT / "demo" / "agency.sql").read_text("utf-8"))
        self.body_file = ROOT / "demo" / "birthday.qzw"
        command = ('"/QBirthday clients" /Ujsmith /F{body} '
                   '"/S[Prefix] [Last Name] [Birthday] [Anniversary] [Travel Date] [Number]"')
        outcomes = []
        for serve in (lambda: None, self.start_sql_server):
            serve()
            mail_server = self.start_mail_server()
            self.assert_ended_well(self.run_scheduler(command))
            outcomes.append((self.log_file.read_bytes(), [
                (message.envelope, message.parsed["Subject"], message.text, message.html)
                for message in mail_server.messages]))
            self.log_file.unlink()
        self.assertGreater(len(outcomes[0][1]), 20)
        self.assertEqual(outcomes[1], outcomes[0])

    def test_first_row_set_of_a_batch_or_procedure(self):
        mail_server = self.start_mail_server()
        hello = {"info": [0, 0, "hello"]}
        batch = "SET NOCOUNT ON; DECLARE @d datetime; UPDATE Log SET n=1; SELECT * FROM x"
        self.start_sql_server(answers=[
            {"statement": batch, "steps": [
                {"count": None}, hello, {"count": 3}, row_set("ann@example.com"), row_set("no@no")]},
            {"statement": "EXEC Mailing", "procedure": True, "steps": [
                hello, {"count": 0}, row_set("bob@example.com", then=[hello]), {"count": 2}]}])
        for sql in (batch, "EXEC Mailing"):
            self.save_query(sql)
            self.assert_ended_well(self.run_scheduler())
        self.assert_log(*log_block(RUNNING, "Sent: ann@example.com"),
                        *log_block(RUNNING, "Sent: bob@example.com"))
        self.assertEqual(len(mail_server.messages), 2)

    def test_errors_stop_the_run_before_any_message(self):
        mail_server = self.start_mail_server()
        half = row_set("ann@example.com", "bob@example.com", then=[DIVIDE_BY_ZERO])
        cases = (
            ("rejected", [{"error": [208, 16, "Invalid object name 'Clents'."]}],
             -2147217900, "Invalid object name 'Clents'.", "208"),
            ("in the middle", [half], -2147217900, "Divide by zero", "8134"),
            ("deadlock", [{"error": [1205, 13, "Transaction was deadlocked."]}],
             -2147217900, "deadlocked", "1205"),
            ("closed", [row_set("ann@example.com", then=[{"break": "close"}])], -2147467259),
            ("reset", [row_set("ann@example.com", then=[{"break": "reset"}])], -2147467259),
            ("silent", [row_set("ann@example.com", then=[{"silence": True}])],
             -2147467259, "Timeout expired"),
            ("too slow", [{"wait": 30}, row_set("ann@example.com")], -2147467259, "Timeout expired"),
        )
        self.start_sql_server(answers=[
            {"statement": "EXEC " + what.replace(" ", "_"), "steps": steps}
            for what, steps, *_ in cases])
        for what, _, number, *words in cases:
            with self.subTest(what):
                self.save_query("EXEC " + what.replace(" ", "_"))
                self.assert_stopped(self.run_scheduler(), number, *words)
        self.assert_log(*unfinished_block(RUNNING) * len(cases))
        self.assertEqual(mail_server.messages, [])

    def test_lock_timeout_that_is_no_number(self):
        self.start_sql_server(answers=[{
            "statement": "SET LOCK_TIMEOUT soon",
            "steps": [{"error": [102, 15, "Incorrect syntax near 'soon'."]}]}])
        self.registry[PRODUCT] = {"LockTimeout": "soon"}
        self.assert_stopped(self.run_scheduler(), -2147217900, "soon", "102")
        self.assertEqual(self.statements(), ["SET LOCK_TIMEOUT soon"])


class Driver(SqlServerTest):
    def test_missing_driver_is_named(self):
        self.start_sql_server()
        self.missing = str(self.folder / "libnone.so")
        result = self.run_scheduler()
        self.assert_stopped(result, 3709)
        self.assertEqual(len(re.findall(re.escape(self.missing), result.stderr)), 1)

    def environment(self, now):
        return super().environment(now) | {"PXSCHEDULER_ODBC_DRIVER": self.missing}
