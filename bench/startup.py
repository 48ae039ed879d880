#!/usr/bin/python3
"""Measures how long PXScheduler takes from its start to the end of its first message.

Runs the birthday query of the sample agency (500 clients in SQLite, a ".qzw" template) against a
small mail server of its own and prints the median, the fastest and the slowest run in milliseconds.
Build with scripts/build first. Usage: bench/startup.py [RUNS]
"""

import contextlib
import os
import socket
import sqlite3
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]


def time_of_first_message(listener: socket.socket) -> float:
    """Serves one connection until it ends; the moment at which its first message had arrived."""
    connection, _ = listener.accept()
    arrived = 0.0
    # The client may leave without the answer to its last command.
    with connection, contextlib.suppress(ConnectionError), connection.makefile("rwb") as stream:
        def reply(text: str) -> None:
            stream.write(text.encode() + b"\r\n")
            stream.flush()

        reply("220 ready")
        for line in stream:
            command = line.split()[0].upper()
            if command == b"DATA":
                reply("354 go on")
                while stream.readline() != b".\r\n":
                    pass
                arrived = arrived or time.monotonic()
            reply("221 bye" if command == b"QUIT" else "250 ok")
    return arrived


def main() -> None:
    runs = int(sys.argv[1]) if len(sys.argv) > 1 else 50
    with tempfile.TemporaryDirectory() as folder, socket.create_server(("127.0.0.1", 0)) as listener:
        database = Path(folder, "agency.db")
        with sqlite3.connect(database) as connection:
            connection.executescript((ROOT / "demo/agency.sql").read_text())
        settings = (ROOT / "demo/agency.reg").read_text()
        settings = settings.replace("@DATABASE@", str(database))
        settings = settings.replace("@PORT@", str(listener.getsockname()[1]))
        Path(folder, "agency.reg").write_text(settings)
        environment = os.environ | {
            "PXSCHEDULER_REGISTRY": f"{folder}/agency.reg", "USERPROFILE": folder, "TMPDIR": folder}
        command = [ROOT / "build/PXScheduler", "/Ujsmith", "/QBirthday clients",
                   "/SHappy birthday, [First Name]!", f"/F{ROOT}/demo/birthday.qzw"]
        milliseconds = []
        for _ in range(runs):
            start = time.monotonic()
            process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL)
            milliseconds.append((time_of_first_message(listener) - start) * 1000)
            if process.wait() != 0:
                sys.exit("the run failed")
    print(f"start to first message, {runs} runs: median {statistics.median(milliseconds):.1f} ms, "
          f"fastest {min(milliseconds):.1f} ms, slowest {max(milliseconds):.1f} ms")


main()
