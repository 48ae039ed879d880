#!/usr/bin/python3
"""Measures the scheduler's mail against other clients, all sending to the same smtp-sink.

Usage: bench/mail/run.py BUILD_FOLDER [--rows N] [--rounds N] [--quick]

Every client does the whole job (rows from SQLite, fifteen tokens in a subject, a plain text and a
4 KB HTML template, one message at a time) except two, which send one ready message of the same
length over and over: smtp-source, and a client that does only what pipelining leaves to be done, as a
bound for all others. Client and sink are pinned, to one core together and to two cores apart; the rounds are
interleaved and begin with another client each, so that a disturbance of the machine, or what one client leaves
behind, meets every client, and the medians are printed.
Peers that are not installed are left out, which is said.
"""

import argparse
import contextlib
import json
import os
import pathlib
import shutil
import socket
import sqlite3
import statistics
import subprocess
import sys
import tempfile
import time

import smtplib_peer

HERE = pathlib.Path(__file__).parent
CORES = sorted(os.sched_getaffinity(0))
QUERY = """SELECT ProfileNumber, Prefix, FirstName, LastName, FullName, Attention, Phone, Fax, Email,
  BirthDate, AnniversaryDate, TravelDate, ReturnDate, FirstDate, LastDate FROM Clients ORDER BY Email"""

REGISTRY = """Windows Registry Editor Version 5.00

[HKEY_CURRENT_USER\\Software\\Kestrova\\Orbalis]
"DSN"="Bench"
[HKEY_LOCAL_MACHINE\\Software\\ODBC\\ODBC.INI\\Bench]
"Server"="sqlite:{database}"
"Database"="Bench"
[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders]
"Personal"="%USERPROFILE%"
[HKEY_LOCAL_MACHINE\\Software\\Kestrova\\Orbalis\\Bench]
"EmailServer"="127.0.0.1:{port}"
"EmailFrom"="marketing@agency.example"
"""


def make_database(path, rows):
    with contextlib.closing(sqlite3.connect(path)) as database:
        database.executescript("""
          CREATE TABLE Users (UserID INTEGER PRIMARY KEY, Login VARCHAR(50), Permissions VARCHAR(250));
          CREATE TABLE MarketingQueries (QueryID INTEGER PRIMARY KEY, UserID INTEGER,
            QueryName VARCHAR(100), QueryString TEXT);
          CREATE TABLE Clients (ProfileNumber INTEGER PRIMARY KEY, Prefix VARCHAR(20),
            FirstName VARCHAR(60), LastName VARCHAR(60), FullName VARCHAR(130),
            Attention VARCHAR(130), Phone VARCHAR(30), Fax VARCHAR(30), Email VARCHAR(120),
            SendEmail BIT, BirthDate DATETIME, AnniversaryDate DATETIME, TravelDate DATETIME,
            ReturnDate DATETIME, FirstDate DATETIME, LastDate DATETIME)""")
        database.executemany(
            "INSERT INTO Clients VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)",
            ((n, "Ms.", f"Ann{n}", f"Smith{n % 977}", f"Ann{n} Smith{n % 977}", None,
              f"555-{n:07}", f"556-{n:07}", f"ann.smith{n:06}@example.com", 1,
              f"{1940 + n % 60}-{1 + n % 12:02}-{1 + n % 28:02}",
              f"{1990 + n % 30}-{1 + n % 12:02}-{1 + n % 28:02}", "2026-11-20", "2026-12-04",
              "2001-03-04", "2026-06-30") for n in range(rows)))
        database.execute("INSERT INTO MarketingQueries VALUES (1, 0, 'Everybody', 'SELECT * FROM Clients')")
        database.commit()


def make_template():
    """About 4 KB of HTML with all the tokens, and its plain rendering."""
    tokens = ["Number", "Prefix", "First Name", "Last Name", "Full Name", "Salutation",
              "Phone Number", "Fax Number", "Email Address", "Birthday", "Anniversary",
              "Travel Date", "Return Date", "Start Date", "Last Date"]
    paragraphs = [f"We have this of you, under {token.lower()}: [{token}]. Write to us where it is "
                  "no longer right, and we shall put it in order before your next journey with us, "
                  "which we hope will be soon." for token in tokens]
    html = ["<html>", "<head><title>Happy birthday</title></head>",
            '<body style="font-family: Verdana; color: #333">', "<h1>Happy birthday!</h1>"]
    html += [f'<p style="margin: 12px">{paragraph}</p>' for paragraph in paragraphs]
    html += ["</body>", "</html>"]
    return "\n".join(html) + "\n", "Happy birthday!\n\n" + "\n\n".join(paragraphs) + "\n"


def make_message(values, plain, html):
    """One row's message, with the final full stop."""
    merged = [smtplib_peer.merged(text, values)
              for text in ("Happy birthday, [First Name]!", plain, html)]
    return smtplib_peer.handmade(merged[0], values[4], values[8], *merged[1:]) + b".\r\n"


class Sink:
    """smtp-sink on a free port of the loopback, pinned to one core."""

    def __init__(self, core):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            self.port = probe.getsockname()[1]
        command = [tool("smtp-sink")] + (["-u", "nobody"] if os.getuid() == 0 else [])
        self.process = subprocess.Popen(command + [f"127.0.0.1:{self.port}", "100"],
                                        preexec_fn=lambda: os.sched_setaffinity(0, {core}))
        for _ in range(500):
            with contextlib.suppress(OSError), socket.create_connection(("127.0.0.1", self.port)):
                return
            time.sleep(0.01)
        raise RuntimeError("smtp-sink does not start")

    def close(self):
        self.process.terminate()
        self.process.wait()


def tool(name):
    found = shutil.which(name) or shutil.which(name, path="/usr/sbin:/sbin")
    if not found:
        sys.exit(f"{name} is not installed")
    return found


def measure(command, environment, core):
    """Wall seconds and processor seconds of one run of a client."""
    start = time.perf_counter()
    process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                               preexec_fn=lambda: os.sched_setaffinity(0, {core}))
    errors = process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    seconds = time.perf_counter() - start
    if process.returncode != 0:
        sys.exit(f"{command[0]}: {errors.decode()}")
    return seconds, usage.ru_utime + usage.ru_stime


def measure_peak(command, environment, core):
    """Peak kilobytes of one run of a client, watched while it runs: what the system says of it at its
    end counts in the memory of this program, of which it began as a copy."""
    process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               preexec_fn=lambda: os.sched_setaffinity(0, {core}))
    peak = 0
    while process.poll() is None:
        with contextlib.suppress(OSError):
            status = pathlib.Path(f"/proc/{process.pid}/status").read_text()
            peak = max([peak] + [int(line.split()[1]) for line in status.splitlines()
                                 if line.startswith("VmHWM:")])
        time.sleep(0.01)
    return (peak,)


class Bench:
    def __init__(self, build, folder, rows):
        self.build = build.resolve()
        self.folder = folder
        self.rows = rows
        self.few_rows = max(1, rows // 20)
        self.database = folder / f"bench{rows}.db"
        make_database(self.database, rows)
        html, plain = make_template()
        self.html, self.plain = folder / "template.htm", folder / "template.txt"
        self.html.write_text(html, encoding="utf-8")
        self.plain.write_text(plain, encoding="utf-8")
        self.json = folder / "rows.json"
        with contextlib.closing(sqlite3.connect(self.database)) as database:
            rows_as_text = [["" if value is None else str(value) for value in row]
                            for row in database.execute(QUERY)]
        self.ready = folder / "ready.eml"
        self.ready.write_bytes(make_message(rows_as_text[0], plain, html))
        self.json.write_text(json.dumps(rows_as_text[:self.few_rows]), encoding="utf-8")

    def messages(self, name):
        """How many messages a client sends: nodemailer is so slow that a part has to do."""
        return self.few_rows if name == "nodemailer" else self.rows

    def scheduler(self, port):
        registry = self.folder / "bench.reg"
        registry.write_text(REGISTRY.format(database=self.database, port=port), encoding="utf-8")
        return [str(self.build / "PXScheduler"), "/QEverybody", "/SHappy birthday, [First Name]!",
                f"/F{self.html}"]

    def sent(self):
        log = self.folder / "Orbalis CS" / "PXScheduler.log"
        text = log.read_bytes() if log.exists() else b""
        log.unlink(missing_ok=True)
        return text.count(b"Sent: ")

    def environment(self):
        return dict(os.environ, PXSCHEDULER_REGISTRY=str(self.folder / "bench.reg"),
                    USERPROFILE=str(self.folder), TMPDIR=str(self.folder))

    def clients(self):
        files = [str(self.html), str(self.plain)]
        python = "/usr/bin/python3"
        peer = str(HERE / "smtplib_peer.py")
        found = {
            "PXScheduler": self.scheduler,
            "smtp-source": lambda port: [tool("smtp-source"), "-s", "1", "-m", str(self.rows),
                                         "-l", str(self.ready.stat().st_size), "-d",
                                         f"127.0.0.1:{port}"],
            "ready message": lambda port: [str(self.build / "ready_peer"), str(self.ready),
                                           str(self.rows), str(port)],
            "smtplib, hand-made": lambda port: [python, peer, "handmade", str(self.database),
                                                *files, str(port)],
            "smtplib, email": lambda port: [python, peer, "email", str(self.database), *files,
                                            str(port)],
        }
        if (self.build / "curl_peer").exists():
            found["libcurl"] = lambda port: [str(self.build / "curl_peer"), str(self.database),
                                             *files, str(port)]
        if (self.build / "node_modules" / "nodemailer").exists():
            found["nodemailer"] = lambda port: ["node", str(HERE / "nodemailer_peer.js"),
                                                str(self.json), *files, str(port)]
        for name in ("libcurl", "nodemailer"):
            if name not in found:
                print(f"{name} is left out: it is not installed")
        return found

    def run(self, name, make_command, client_core, sink_core, measurement=measure):
        sink = Sink(sink_core)
        try:
            environment = self.environment()
            environment["NODE_PATH"] = str(self.build / "node_modules")
            result = measurement(make_command(sink.port), environment, client_core)
        finally:
            sink.close()
        if name == "PXScheduler" and (sent := self.sent()) != self.rows:
            sys.exit(f"PXScheduler sent {sent} of {self.rows} messages")
        return result


def compare(bench, rounds):
    for placement, cores in (("one core", (CORES[0], CORES[0])), ("two cores", CORES[:2])):
        if len(cores) < 2:
            print("There is no second core")
            return
        clients = list(bench.clients().items())
        results = {name: [] for name, _ in clients}
        for number in range(rounds):
            first = number % len(clients)
            for name, make_command in clients[first:] + clients[:first]:
                results[name].append(bench.run(name, make_command, *cores))
        medians = {name: [statistics.median(column) for column in zip(*values)]
                   for name, values in results.items()}
        for name, make_command in clients:
            medians[name] += bench.run(name, make_command, *cores, measure_peak)
        base = bench.rows / medians["smtp-source"][0]
        print(f"\n{placement}, {bench.rows} messages, medians of {rounds}")
        print(f"{'':20}{'messages/s':>12}{'to smtp-source':>16}{'CPU s/10,000':>14}{'peak MB':>9}")
        for name, (seconds, processor, kilobytes) in medians.items():
            rate = bench.messages(name) / seconds
            print(f"{name:20}{rate:12.0f}{rate / base:16.2f}"
                  f"{processor * 10000 / bench.messages(name):14.3f}{kilobytes / 1024:9.1f}")


def growth(bench, larger):
    print("\nPXScheduler as the data grows, on one core")
    for each in (bench, larger):
        seconds, processor = each.run("PXScheduler", each.scheduler, CORES[0], CORES[0])
        (kilobytes,) = each.run("PXScheduler", each.scheduler, CORES[0], CORES[0], measure_peak)
        print(f"{each.rows:8} rows: {seconds:7.2f} s, {processor:6.2f} s of processor, "
              f"{kilobytes / 1024:7.1f} MB at its peak")


def system_calls(folder, build):
    """System calls a message: a run of 200 less a run of 100, so that start and end cancel out."""
    if not shutil.which("strace"):
        print("strace is not installed: system calls are not counted")
        return
    counts = []
    for rows in (100, 200):
        bench = Bench(build, folder, rows)
        summary = folder / "strace"
        sink = Sink(CORES[0])
        try:
            subprocess.run(["strace", "-f", "-c", "-o", str(summary), *bench.scheduler(sink.port)],
                           env=bench.environment(), check=True, stdin=subprocess.DEVNULL)
        finally:
            sink.close()
        bench.sent()
        calls = {}
        for line in summary.read_text().splitlines():
            fields = line.split()
            if len(fields) >= 5 and fields[3].isdigit() and fields[-1] != "total":
                calls[fields[-1]] = int(fields[3])
        counts.append(calls)
    each = {name: (count - counts[0].get(name, 0)) / 100 for name, count in counts[1].items()}
    print(f"\nSystem calls a message: {sum(each.values()):.2f} ("
          + ", ".join(f"{name} {value:.2f}" for name, value in sorted(each.items()) if value) + ")")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--rows", type=int, default=10000)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--quick", action="store_true", help="the comparison alone")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="pxscheduler-bench-") as name:
        folder = pathlib.Path(name)
        bench = Bench(options.build, folder, options.rows)
        compare(bench, options.rounds)
        if not options.quick:
            growth(bench, Bench(options.build, folder, 10 * options.rows))
            system_calls(folder, options.build)


if __name__ == "__main__":
    main()
