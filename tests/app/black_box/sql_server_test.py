"""Whole runs against a SQL Server through the real driver."""

import json
import subprocess
import sys
from pathlib import Path

from machine import DATA_SOURCE, MAIL, PRODUCT, RUNNING, SchedulerTest, unfinished_block

ROOT = Path(__file__).resolve().parents[3]
TDS_SERVER = ROOT / "tests" / "support" / "tds_server.py"
LOOKUP = "SELECT QueryString FROM MarketingQueries WHERE QueryName="
SHARED = " AND UserID=0"
OWNED = (" AND UserID=(SELECT UserID FROM Users WHERE (UserID=1 OR "
         "SUBSTRING(Permissions,200,1)='1') AND Login=")
QUERY = "SELECT * FROM Clients"


class SqlServerTest(SchedulerTest):
    def start_sql_server(self, *arguments, answers=()):
        """Serves the machine's database over TDS, and makes that the agency's data source."""
        script = self.write_file("answers.json", json.dumps(list(answers)).encode())
        self.server_log = self.folder / "sql server.log"
        self.server_log.unlink(missing_ok=True)
        server = subprocess.Popen(
            [sys.executable, TDS_SERVER, "--sqlite", self.folder / "agency.db", "--answers", script,
             "--log", self.server_log, "--database", "Sunset Travel", *arguments],
            stdout=subprocess.PIPE, text=True)
        self.addCleanup(server.stdout.close)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        self.registry[DATA_SOURCE]["Server"] = f"127.0.0.1,{int(server.stdout.readline())}"

    def logged(self, kind):
        """The logins or the statements that the server got, each as the fields of its line."""
        lines = self.server_log.read_text("utf-8").splitlines()
        return [line.split("\t")[1:] for line in lines if line.startswith(kind + "\t")]


class Access(SqlServerTest):
    def test_statements_that_are_sent(self):
        self.start_mail_server()
        self.start_sql_server()
        for switches, time_out, lookup, *rest in (
                ("/QMailing", "60000", "'Mailing'" + SHARED, QUERY),
                ("/QMailing /Ujsmith", "60000", "'Mailing'" + OWNED + "'jsmith')"),
                ("/QMailing /UO'Brien", "60000", "'Mailing'" + OWNED + "'O''Brien')"),
                ("/QIt's ours", "-1", "'It''s ours'" + SHARED)):
            self.server_log.unlink(missing_ok=True)
            self.registry[PRODUCT] = {} if time_out == "60000" else {"LockTimeout": time_out}
            self.assert_ended_well(self.run_scheduler(f'"{switches}" /SHello /F{{body}}'),
                                   *([] if rest else ["No saved query"]))
            statements = [text for text, in self.logged("statement") if text != "SELECT DB_NAME()"]
            self.assertEqual(statements, ["SET LOCK_TIMEOUT " + time_out, LOOKUP + lookup, *rest])

    def test_password_of_the_machine_then_the_fallback(self):
        self.start_mail_server()
        secret = " {s=cret} \u00e9"
        self.keep_password(secret)
        for accepted, *tried in ((secret, secret), ("tonal", secret, "tonal")):
            self.start_sql_server("--password", accepted)
            self.assert_sends()
            self.assertEqual(self.logged("login"), [
                ["appuser", password, "Sunset Travel", "plain", "PXScheduler"]
                for password in tried])

    def test_what_cannot_be_opened_ends_the_run_at_the_lookup(self):
        self.start_sql_server("--password", "other")
        self.assert_stopped(self.run_scheduler(), 3709)
        self.assertEqual(len(self.logged("login")), 2)
        self.assert_log(*unfinished_block(RUNNING))

    def test_mail_settings_are_those_of_the_current_database(self):
        mail_server = self.start_mail_server()
        self.registry[PRODUCT + r"\Other"] = self.registry.pop(MAIL)
        self.start_sql_server(answers=[{
            "statement": LOOKUP + "'Mailing'" + SHARED, "steps": [
                {"columns": [["QueryString", "ntext"]], "rows": [[QUERY], ["the first counts"]]},
                {"database": "Other"}]}])
        self.add_client("ann@example.com")
        self.assert_sends("Sent: ann@example.com")
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

    def test_errors_stop_the_run_before_any_message(self):
        mail_server = self.start_mail_server()
        columns = [["Email", "nvarchar(120)"], ["SendEmail", "bit"]]
        for step, number, *words in (
                ({"error": [8134, 16, "Divide by zero"]}, -2147217900, "Divide by zero", "8134"),
                ({"break": "close"}, -2147467259)):
            with self.subTest(step=step):
                self.start_sql_server(answers=[{"statement": QUERY, "steps": [
                    {"columns": columns, "rows": [["ann@example.com", 1], step]}]}])
                self.assert_stopped(self.run_scheduler(), number, *words)
                self.assert_log(*unfinished_block(RUNNING))
        self.assertEqual(mail_server.messages, [])
