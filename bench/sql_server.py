#!/usr/bin/python3
"""Measures a result set of a million clients that comes from a SQL Server: memory and time.

The sixteen columns that a saved query returns, 300 characters of text a row, served by the scripted
SQL Server of the tests, which has them encoded beforehand. Told beside it: how long the same bytes
take when they are read from the socket and thrown away, which is the least that any client takes.
Usage: bench/sql_server.py PATH_OF_bench_sql_server_fetch [ROWS]
"""

import json
import os
import socket
import struct
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
DISTINCT = 10_000
TEXT = 300
TEXTS = ["Prefix", "FirstName", "LastName", "FullName", "Attention", "Phone", "Fax", "Email"]
DATES = ["BirthDate", "AnniversaryDate", "TravelDate", "ReturnDate", "FirstDate", "LastDate"]
# Text as bytes of the code page, a date in eight, a number in four and a flag in one.
VALUE_BYTES = TEXT + 8 * len(DATES) + 4 + 1


def client(number: int) -> list:
    email = f"client.{number * 7919 % DISTINCT:05}@example.org"
    share, rest = divmod(TEXT - len(email), len(TEXTS) - 1)
    texts = [chr(ord("a") + number % 26) * share for _ in TEXTS[1:]] + [email]
    texts[3] += "x" * rest
    dates = [f"{1950 + (number + at) % 70}-0{1 + at}-{10 + number % 18}" for at in range(len(DATES))]
    return [number, *texts, 1, *dates]


def answers(rows: int) -> str:
    columns = [["ProfileNumber", "int"], *([name, "nvarchar(150)"] for name in TEXTS),
               ["SendEmail", "bit"], *([name, "datetime"] for name in DATES)]
    step = {"columns": columns, "rows": [client(number) for number in range(DISTINCT)],
            "repeat": rows // DISTINCT}
    return json.dumps([{"statement": "clients", "steps": [step]}])


def drain(port: int) -> tuple[int, float]:
    """The bytes of the answer and the seconds that it takes to read and drop them."""
    with socket.create_connection(("127.0.0.1", port)) as server:
        def send(kind: int, body: bytes) -> None:
            server.sendall(struct.pack(">BBHHBB", kind, 1, len(body) + 8, 0, 1, 0) + body)

        def receive() -> int:
            size = 0
            while True:
                header = server.recv(8, socket.MSG_WAITALL)
                _, status, length = struct.unpack(">BBH4x", header)
                server.recv(length - 8, socket.MSG_WAITALL)
                size += length
                if status & 1:
                    return size

        send(18, struct.pack(">BHHB", 1, 6, 1, 0xFF) + b"\x02")
        receive()
        names = [b"", "appuser".encode("utf-16-le"), "tonal".encode("utf-16-le")]
        names[2] = bytes((byte << 4 & 0xF0 | byte >> 4) ^ 0xA5 for byte in names[2])
        places, data = b"", b""
        for name in names + [b""] * 6:
            places += struct.pack("<HH", 94 + len(data), len(name) // 2)
            data += name
        send(16, struct.pack("<II28x", 94 + len(data), 0x74000004) + places.ljust(58, b"\0") + data)
        receive()
        start = time.monotonic()
        send(1, struct.pack("<I", 4) + "clients".encode("utf-16-le"))
        # From here on in large pieces: the answer is known to end with the last packet's status.
        size, buffer = 0, bytearray(1 << 18)
        rest = 0  # bytes of the current packet that are still to come
        while True:
            got = server.recv_into(buffer)
            at = 0
            size += got
            while at < got:
                if rest == 0:
                    header = bytes(buffer[at:min(at + 8, got)])
                    if len(header) < 8:
                        header += server.recv(8 - len(header), socket.MSG_WAITALL)
                    _, status, length = struct.unpack(">BBH4x", header)
                    rest, last = length - 8, status & 1
                    at += 8
                step = min(rest, max(got - at, 0))
                rest -= step
                at += step
            if rest == 0 and last:
                return size, time.monotonic() - start


def processor_seconds(process: int) -> float:
    """What a process has used so far."""
    fields = Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def main() -> None:
    program, rows = sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 1_000_000
    with tempfile.TemporaryDirectory() as folder:
        script = Path(folder, "answers.json")
        script.write_text(answers(rows))
        server = subprocess.Popen(["/usr/bin/python3", ROOT / "tests/support/tds_server.py",
                                   "--answers", script], stdout=subprocess.PIPE, text=True)
        try:
            port = int(server.stdout.readline())
            size, drained = drain(port)
            served = processor_seconds(server.pid)
            result = subprocess.run([program, f"127.0.0.1,{port}", "clients"], check=True,
                                    stdout=subprocess.PIPE, text=True).stdout.split()
            served = processor_seconds(server.pid) - served
        finally:
            server.kill()
            server.wait()
    count = int(result[0])
    fetch, cpu, sort, held, peak = map(float, result[1:])
    if count != rows:
        sys.exit(f"{count} rows came instead of {rows}")
    values = count * VALUE_BYTES
    print(f"{count} rows, {values / 1e6:.0f} MB of values, {size / 1e6:.0f} MB over TDS")
    print(f"read and dropped: {drained:.2f} s")
    print(f"fetched: {fetch:.2f} s, sorted: {sort:.2f} s; on the processor, "
          f"the server {served:.2f} s and the fetch {cpu:.2f} s")
    print(f"held: {held / 1e6:.0f} MB, {held / values:.3f} times the values; "
          f"at most {peak / 1e6:.0f} MB, {peak / values:.3f} times, while sorting")


main()
