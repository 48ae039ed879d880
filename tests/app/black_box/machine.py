"""A made-up machine around the real executable: registry, agency database, clock and mail server.

The executable is named by the environment variable PXSCHEDULER, as a command that may begin with an
emulator; its companion by PXSECRET. Where that command runs it by Wine, the registry is the one of
Wine's prefix, which the tests of all classes share, and wine.py has what else differs.
"""

import email
import email.policy
import json
import os
import shlex
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

import wine

SMTP_SERVER = Path(__file__).resolve().parents[2] / "support" / "smtp_server.py"

PRODUCT = r"HKEY_LOCAL_MACHINE\Software\Kestrova\Orbalis"
USER_PRODUCT = r"HKEY_CURRENT_USER\Software\Kestrova\Orbalis"
MAIL = PRODUCT + r"\Sunset Travel"
DATA_SOURCE = r"HKEY_LOCAL_MACHINE\Software\ODBC\ODBC.INI\agency"
SHELL_FOLDERS = wine.SHELL_FOLDERS
INTERNATIONAL = r"HKEY_CURRENT_USER\Control Panel\International"
CODE_PAGE = r"HKEY_LOCAL_MACHINE\System\CurrentControlSet\Control\Nls\CodePage"

NOW = "2026-11-16 15:07:41"
SEPARATOR = "=" * 32
USAGE = ("Usage: PXScheduler /U[user name] /Q[saved query name] /S[subject] "
         "/F[message body file]")
COMMAND = '/QMailing "/SHello [First Name]" /F{body}'
RUNNING = "Running query: Mailing"

FAKETIME = next(Path("/usr/lib").glob("*/faketime/libfaketime.so.1"))


def log_block(*lines, time="11/16/2026 3:07:41 PM"):
    """The whole account of a run that ended as it should."""
    return [*unfinished_block(*lines, time=time), SEPARATOR, "Query finished: " + time, SEPARATOR]


def unfinished_block(*lines, time="11/16/2026 3:07:41 PM"):
    return [SEPARATOR, "Query started: " + time, SEPARATOR, *lines]


def wait_until(is_true, what):
    deadline = time.monotonic() + 30
    while not is_true():
        if time.monotonic() > deadline:
            raise TimeoutError(what)
        time.sleep(0.01)


class Message:
    """One message as the mail server got it."""

    def __init__(self, raw, envelope):
        self.envelope = envelope
        self.raw = raw
        self.parsed = email.message_from_bytes(raw, policy=email.policy.default)

    @property
    def text(self):
        """The plain text, alone or the first of two parts, with bare line feeds."""
        return self.parsed.get_body(("plain",)).get_content().replace("\r\n", "\n")

    @property
    def html(self):
        return self.parsed.get_body(("html",)).get_content()


class MailServer:
    """The scripted server as a process of its own; `script` is what smtp_server.py documents."""

    def __init__(self, folder, script):
        self.mailbox, self.port_file = folder / "mailbox", folder / "port"
        self.process = subprocess.Popen(
            [sys.executable, SMTP_SERVER, "--port-file", self.port_file, "--mailbox", self.mailbox,
             "--script", json.dumps(script)])

    def stop(self):
        self.process.terminate()
        self.process.wait()

    @property
    def messages(self):
        return [Message(path.read_bytes(), json.loads(path.with_suffix(".json").read_text()))
                for path in sorted(self.mailbox.glob("*.eml"))]


class SchedulerTest(unittest.TestCase):
    """Each test has a machine of its own, with one saved query, "Mailing", and no client yet."""

    maxDiff = 3000

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="black box "))
        self.addCleanup(shutil.rmtree, self.folder)
        for name in ("home", "tmp", "credentials", "work"):
            (self.folder / name).mkdir()
        self.log_file = self.folder / "home" / "Documents" / "Orbalis CS" / "PXScheduler.log"
        self.body_file = self.write_file("work/letter.txt", "Dear [Salutation],\r\nhello.\r\n")
        self.registry_mode = 0o600
        self.registry = {
            USER_PRODUCT: {"DSN": "agency"},
            DATA_SOURCE: {
                "Server": "sqlite:" + self.path_text(self.folder / "agency.db"),
                "Database": "Sunset Travel",
            },
            MAIL: {"EmailServer": "127.0.0.1:9", "EmailFrom": "office@sunset.example"},
            SHELL_FOLDERS: {"Personal": r"%USERPROFILE%\Documents"},
        }
        self.database = sqlite3.connect(self.folder / "agency.db")
        self.addCleanup(self.database.close)
        self.database.executescript(
            """
            CREATE TABLE MarketingQueries (UserID INTEGER, QueryName TEXT, QueryString TEXT);
            CREATE TABLE Users (UserID INTEGER, Login TEXT, Permissions TEXT);
            CREATE TABLE Clients (
                ProfileNumber INTEGER, Prefix TEXT, FirstName TEXT, LastName TEXT, FullName TEXT,
                Attention TEXT, Phone TEXT, Fax TEXT, Email TEXT, SendEmail INTEGER,
                BirthDate DATETIME, AnniversaryDate DATETIME, TravelDate DATETIME,
                ReturnDate DATETIME, FirstDate DATETIME, LastDate DATETIME);
            """
        )
        self.save_query("SELECT * FROM Clients")

    # What the machine holds

    def write_file(self, name, content):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode("cp1252"))
        return path

    def insert(self, table, **values):
        places = ", ".join("?" * len(values))
        with self.database:
            self.database.execute(f"INSERT INTO {table} ({', '.join(values)}) VALUES ({places})",
                                  tuple(values.values()))

    def save_query(self, sql, name="Mailing", user=0):
        self.database.execute(
            "DELETE FROM MarketingQueries WHERE QueryName=? AND UserID=?", (name, user))
        self.insert("MarketingQueries", UserID=user, QueryName=name, QueryString=sql)

    def add_client(self, email, **values):
        self.insert("Clients", **{"Email": email, "SendEmail": 1, "FirstName": "Ann",
                                  "FullName": "Ann Lee", **values})

    def registry_lines(self):
        for key, values in (self.registry or {}).items():
            yield f"[{key}]"
            for name, value in values.items():
                escaped = value.replace("\\", "\\\\").replace('"', '\\"')
                yield f'"{name}"="{escaped}"'

    def start_mail_server(self, **script):
        """Starts a server and makes it the agency's."""
        server = MailServer(Path(tempfile.mkdtemp(dir=self.folder)), script)
        self.addCleanup(server.stop)
        wait_until(server.port_file.exists, "the mail server does not start")
        self.registry[MAIL]["EmailServer"] = "127.0.0.1:" + server.port_file.read_text().strip()
        return server

    # Running

    @staticmethod
    def path_text(path):
        """A path as the executable knows it."""
        return wine.path_text(path) if wine.IS_USED else str(path)

    def converted_file(self):
        return wine.converted_file() if wine.IS_USED else self.folder / "tmp" / "scheduler.htm"

    def environment(self, now):
        machine = wine.environment() if wine.IS_USED else {
            "USERPROFILE": str(self.folder / "home"),
            "TMPDIR": str(self.folder / "tmp"),
            "PXSCHEDULER_REGISTRY": str(self.folder / "agency.reg"),
            "PXSCHEDULER_CREDENTIALS": str(self.folder / "credentials"),
            # The sanitizer's own library is not the first where another is preloaded.
            "ASAN_OPTIONS": "verify_asan_link_order=0",
        }
        return {"PATH": os.environ["PATH"], "TZ": "UTC", "LD_PRELOAD": str(FAKETIME),
                "FAKETIME": now, "FAKETIME_DONT_FAKE_MONOTONIC": "1", **machine}

    def start(self, command_line=COMMAND, now=NOW, **options):
        """Starts the executable. The command line is split as a shell splits it; {body} stands for
        the body file."""
        arguments = shlex.split(
            command_line.replace("{body}", shlex.quote(self.path_text(self.body_file))))
        if wine.IS_USED:
            wine.import_registry(self.folder, self.registry_lines())
            arguments = wine.words(arguments)
        elif self.registry is not None:
            # In one step, since another run may be reading it.
            file = self.write_file("new.reg", wine.registry_text(self.registry_lines()).encode())
            file.chmod(self.registry_mode)
            file.replace(self.folder / "agency.reg")
        process = subprocess.Popen(
            shlex.split(os.environ["PXSCHEDULER"]) + arguments,
            cwd=self.folder / "work", env=self.environment(now), text=True, errors="replace",
            **{"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE,
               **options})
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process

    def run_scheduler(self, command_line=COMMAND, now=NOW, **options):
        process = self.start(command_line, now, **options)
        output, errors = process.communicate(timeout=60)
        return subprocess.CompletedProcess(process.args, process.returncode, output, errors)

    def run_pxsecret(self, *arguments, input=None):
        return subprocess.run(
            [*shlex.split(os.environ["PXSECRET"]), *arguments], input=input, capture_output=True,
            check=True, encoding="utf-8", timeout=60).stdout

    def keep_password(self, password):
        """Makes it the machine's own password for the database login."""
        if wine.IS_USED:
            self.addCleanup(wine.forget_credentials)
            self.run_pxsecret("store", "appuser", input=password)
        else:
            self.write_file("credentials/appuser", password.encode())

    def encipher(self, password):
        """The password as the registry holds it, with a key among the credentials."""
        if wine.IS_USED:
            self.addCleanup(wine.forget_credentials)
            self.run_pxsecret("new-key")
            return self.run_pxsecret("encipher", input=password + "\n").strip()
        key = self.folder / "credentials" / "mailkey"
        if not key.exists():
            self.run_pxsecret("new-key", key)
        return self.run_pxsecret("encipher", key, input=password + "\n").strip()

    # What must hold afterwards

    def assert_ended_well(self, result, *warning):
        """Status 0, and nothing on standard error or one line with these words."""
        self.assertEqual((result.returncode, result.stdout), (0, ""), result.stderr)
        self.assertEqual(result.stderr.count("\n"), 1 if warning else 0, result.stderr)
        for word in warning:
            self.assertIn(word, result.stderr)

    def assert_stopped(self, result, number, *words):
        """The runtime's error report with this number, and status 1."""
        self.assertEqual((result.returncode, result.stdout), (1, ""), result.stderr)
        if wine.IS_USED:
            return  # the report is a window that nobody sees here
        self.assertIn("Vantreo Scheduler", result.stderr)
        self.assertRegex(result.stderr, rf"(?<![0-9-]){number}(?![0-9])")
        for word in words:
            self.assertIn(word, result.stderr)

    def assert_shows_usage(self, result):
        self.assertEqual((result.returncode, result.stdout), (0, ""))
        if not wine.IS_USED:
            self.assertIn("Vantreo Scheduler", result.stderr)
            self.assertIn(USAGE, result.stderr)

    def assert_log(self, *lines, encoding="cp1252"):
        """What the log holds. The next run begins another."""
        expected = "".join(line + "\r\n" for line in lines).encode(encoding)
        self.assertEqual(self.log_file.read_bytes(), expected)
        self.log_file.unlink()

    def assert_sends(self, *outcomes, command_line=COMMAND, warning=()):
        """A run of the query ends as it should and has these outcomes in the log."""
        self.assert_ended_well(self.run_scheduler(command_line), *warning)
        self.assert_log(*log_block(RUNNING, *outcomes))
