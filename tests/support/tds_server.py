"""A SQL Server for tests: the parts of TDS 7.4 ([MS-TDS]) that a client meets, on loopback.

Prints its port once it listens, and serves until it is ended. What it answers comes from a SQLite
file or script, which stands for the database, and before that from a JSON file of scripted answers:

    [{"statement": "SELECT 1", "procedure": false, "steps": [STEP, ...]}, ...]

"pattern" in place of "statement" is a regular expression for the whole statement. A STEP is one of
    {"columns": [["Email", "nvarchar(120)"], ...], "rows": [ROW or STEP, ...], "repeat": 1}
    {"count": 3}  (null: a statement that counts no rows)    {"database": "Other"}
    {"info": [NUMBER, SEVERITY, TEXT]}                       {"error": [NUMBER, SEVERITY, TEXT]}
    {"wait": SECONDS}    {"silence": true}    {"break": "close" or "reset"}
A type may end in "not null" and in "collate" with the name of a code page. Exact numbers, dates and
identifiers are written as text.

Each login and each statement is a line of the log file: login, user, password, database, "plain" or
"encrypted", application, or statement and its text; tabs between them, line ends written "\\n".
"""

import argparse
import atexit
import json
import re
import select
import shutil
import socket
import ssl
import struct
import subprocess
import tempfile
import threading
from pathlib import Path

from tds_values import collation, long_text, short_text, wire_type, with_length
from transact_sql import Database, Rejected

SQL_BATCH, REPLY, ATTENTION, LOGIN7, PRELOGIN = 1, 4, 6, 16, 18
END_OF_MESSAGE = 1
DONE, DONE_PROCEDURE, DONE_IN_PROCEDURE = 0xFD, 0xFE, 0xFF
MORE, ERROR, COUNT, ATTENTION_ACKNOWLEDGED = 0x01, 0x02, 0x10, 0x20
PLAIN_LOGIN_ONLY, ENCRYPT_ALL, NO_ENCRYPTION = 0, 1, 2


class Hangup(Exception):
    """The connection is over."""


class Cancelled(Exception):
    """The client has given up waiting for its answer."""


# --- Packets ------------------------------------------------------------------------------------


class Channel:
    """Messages over a socket, in TLS once both sides have agreed on it."""

    def __init__(self, peer):
        self.peer, self.tls, self.packet_size = peer, None, 4096
        self.peer.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self.pending = bytearray()

    def read(self, count):
        data = b""
        while len(data) < count:
            missing = count - len(data)
            piece = self.tls_read(missing) if self.tls else self.peer.recv(missing)
            if not piece:
                raise Hangup
            data += piece
        return data

    def write(self, data):
        if self.tls:
            self.tls.write(data)
            data = self.outgoing.read()
        self.peer.sendall(data)

    def read_message(self):
        message = b""
        while True:
            kind, status, size = struct.unpack(">BBH4x", self.read(8))
            message += self.read(size - 8)
            if status & END_OF_MESSAGE:
                return kind, message

    def packet(self, data, status, kind=REPLY):
        return struct.pack(">BBHHBB", kind, status, len(data) + 8, 51, 1, 0) + data

    def reply(self, data):
        self.pending += data
        room = self.packet_size - 8
        if len(self.pending) > room:
            full = len(self.pending) // room * room
            if full == len(self.pending):
                full -= room  # the end of the message goes out with its last packet
            self.write(b"".join(self.packet(self.pending[at:at + room], 0)
                                for at in range(0, full, room)))
            del self.pending[:full]

    def end_reply(self):
        self.write(self.packet(self.pending, END_OF_MESSAGE))
        self.pending.clear()

    def break_off(self, how):
        self.write(self.packet(self.pending, 0))
        if how == "reset":
            self.peer.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.peer.close()
        raise Hangup

    def wait(self, seconds):
        if select.select([self.peer], [], [], seconds)[0]:
            if self.read_message()[0] == ATTENTION:
                raise Cancelled
            raise Hangup

    def start_tls(self, certificate):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.maximum_version = ssl.TLSVersion.TLSv1_2  # nothing may follow the handshake
        context.load_cert_chain(certificate)
        self.incoming, self.outgoing = ssl.MemoryBIO(), ssl.MemoryBIO()
        tls = context.wrap_bio(self.incoming, self.outgoing, server_side=True)
        while True:
            try:
                tls.do_handshake()
                break
            except ssl.SSLWantReadError:
                if data := self.outgoing.read():
                    self.write(self.packet(data, END_OF_MESSAGE, PRELOGIN))
                self.incoming.write(self.read_message()[1])
        self.write(self.packet(self.outgoing.read(), END_OF_MESSAGE, PRELOGIN))
        self.tls = tls

    def tls_read(self, count):
        while True:
            try:
                return self.tls.read(count)
            except ssl.SSLWantReadError:
                data = self.peer.recv(65536)
                if not data:
                    return b""
                self.incoming.write(data)


# --- Tokens -------------------------------------------------------------------------------------


def message_token(token, number, severity, text):
    body = struct.pack("<IBB", number, 1, severity) + long_text(text)
    body += short_text("TESTSERVER") + short_text("") + struct.pack("<I", 1)
    return bytes([token]) + with_length("<H", body)


def changed(what, new, old):
    return b"\xe3" + with_length("<H", bytes([what]) + short_text(new) + short_text(old))


def database_changed(new, old):
    text = f"Changed database context to '{new}'."
    return changed(1, new, old) + message_token(0xAB, 5701, 0, text)


def done(token, status, count=None):
    status |= COUNT if count is not None else 0
    return struct.pack("<BHHQ", token, status, 0xC1, count or 0)


def describe_columns(columns):
    token = struct.pack("<BH", 0x81, len(columns))
    for name, declared in columns:
        token += struct.pack("<IH", 0, "not null" not in declared)
        token += wire_type(declared)[0] + short_text(name)
    return token


def login_fields(data):
    def text(place):
        offset, length = struct.unpack_from("<HH", data, place)
        return data[offset:offset + 2 * length]

    hidden = bytes((byte ^ 0xA5) >> 4 | ((byte ^ 0xA5) << 4 & 0xF0) for byte in text(44))
    names = [text(40), hidden, text(68), text(48)]
    return [name.decode("utf-16-le", "replace") for name in names]


# --- A session ----------------------------------------------------------------------------------


class Session:
    def __init__(self, peer, options):
        self.channel, self.options = Channel(peer), options
        self.database, self.rows = options.database, None

    def log(self, *fields):
        if self.options.log:
            line = "\t".join(field.replace("\r", "\\r").replace("\n", "\\n") for field in fields)
            with open(self.options.log, "a", encoding="utf-8") as log:
                log.write(line + "\n")

    def run(self):
        try:
            if self.options.mute:
                self.fall_silent()
            if not self.log_in():
                return
            while True:
                kind, data = self.channel.read_message()
                try:
                    if kind == SQL_BATCH:
                        self.answer(data[struct.unpack_from("<I", data)[0]:].decode("utf-16-le"))
                    elif kind == ATTENTION:
                        raise Cancelled
                    else:
                        self.refuse(0, f"No support for messages of type {kind}.")
                except Cancelled:
                    self.channel.reply(done(DONE, ATTENTION_ACKNOWLEDGED))
                    self.channel.end_reply()
        except (Hangup, OSError, ssl.SSLError):
            pass
        finally:
            self.channel.peer.close()

    def fall_silent(self):
        while self.channel.peer.recv(4096):
            pass
        raise Hangup

    def log_in(self):
        _, offered = self.channel.read_message()
        place = next(at for at in range(0, 60, 5) if offered[at] == 1)
        wanted = offered[struct.unpack_from(">H", offered, place + 1)[0]]
        mode = wanted if self.options.certificate and wanted != NO_ENCRYPTION else NO_ENCRYPTION
        version = b"\x10\0\x10\0\0\0"  # SQL Server 2022
        options = struct.pack(">BHHBHHB", 0, 11, 6, 1, 17, 1, 0xFF)
        self.channel.reply(options + version + bytes([mode]))
        self.channel.end_reply()
        if mode != NO_ENCRYPTION:
            self.channel.start_tls(self.options.certificate)
        _, data = self.channel.read_message()
        if mode == PLAIN_LOGIN_ONLY:
            self.channel.tls = None
        user, password, database, application = login_fields(data)
        self.log("login", user, password, database,
                 "encrypted" if mode == ENCRYPT_ALL else "plain", application)
        if (user, password) != (self.options.user, self.options.password):
            return self.refuse(18456, f"Login failed for user '{user}'.", 14)
        if database and database.lower() != self.database.lower():
            text = f'Cannot open database "{database}" requested by the login. The login failed.'
            self.channel.reply(message_token(0xAA, 4060, 11, text))
            return self.refuse(18456, f"Login failed for user '{user}'.", 14)
        product = "Microsoft SQL Server"
        self.channel.reply(
            database_changed(self.database, "master")
            + b"\xe3" + with_length("<H", b"\x07" + with_length("<B", collation("cp1252")) + b"\0")
            + changed(2, "us_english", "")
            + message_token(0xAB, 5703, 0, "Changed language setting to us_english.")
            + b"\xad" + with_length("<H", b"\x01\x74\0\0\x04" + short_text(product) + version[:4])
            + changed(4, "4096", "4096") + done(DONE, 0))
        self.channel.end_reply()
        return True

    def refuse(self, number, text, severity=16):
        self.channel.reply(message_token(0xAA, number, severity, text) + done(DONE, ERROR))
        self.channel.end_reply()
        return False

    def answer(self, statement):
        self.log("statement", statement)
        for scripted in self.options.answers:
            if scripted.get("statement") == statement or (
                    "pattern" in scripted and re.fullmatch(scripted["pattern"], statement, re.S)):
                return self.perform(scripted["steps"], scripted.get("procedure", False))
        if self.rows is None:
            self.rows = Database(self.options.sqlite, lambda: self.database)
        try:
            return self.perform(self.rows.run(statement))
        except Rejected as rejected:
            return self.refuse(*rejected.args)

    def perform(self, steps, procedure=False):
        finished = DONE_IN_PROCEDURE if procedure else DONE
        for place, step in enumerate(steps):
            last = place == len(steps) - 1 and not procedure
            self.take_step(step, finished, 0 if last else MORE)
        if procedure:
            self.channel.reply(b"\x79\0\0\0\0" + done(DONE_PROCEDURE, 0))
        elif not steps or not any(key in steps[-1] for key in ("columns", "count", "error")):
            self.channel.reply(done(DONE, 0))
        self.channel.end_reply()

    def take_step(self, step, finished, more):
        if "columns" in step:
            self.channel.reply(describe_columns(step["columns"]))
            count = self.send_rows(step, finished)
            self.channel.reply(done(finished, more, count))
        elif "count" in step:
            self.channel.reply(done(finished, more, step["count"]))
        elif "info" in step:
            self.channel.reply(message_token(0xAB, *step["info"]))
        elif "error" in step:
            self.channel.reply(message_token(0xAA, *step["error"]) + done(finished, more | ERROR))
        elif "database" in step:
            self.channel.reply(database_changed(step["database"], self.database))
            self.database = step["database"]
        elif "wait" in step:
            self.channel.wait(step["wait"])
        elif "silence" in step:
            self.fall_silent()
        elif "break" in step:
            self.channel.break_off(step["break"])

    def send_rows(self, step, finished):
        encoders = [wire_type(declared)[1] for _, declared in step["columns"]]
        repeat, block, count = step.get("repeat", 1), bytearray(), 0
        for row in step["rows"]:
            if isinstance(row, dict):
                self.channel.reply(block)
                block.clear()
                self.take_step(row, finished, MORE)
                continue
            block += b"\xd1"
            for encode, value in zip(encoders, row):
                block += encode(value)
            count += 1
        for _ in range(repeat):
            self.channel.reply(block)
        return count * repeat


def new_certificate():
    """A PEM file with a key and a certificate for it."""
    folder = Path(tempfile.mkdtemp())
    atexit.register(shutil.rmtree, folder)
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
         "-nodes", "-subj", "/CN=localhost", "-keyout", folder / "pem", "-out", folder / "crt"],
        check=True, stderr=subprocess.DEVNULL)
    with open(folder / "pem", "a", encoding="ascii") as pem:
        pem.write((folder / "crt").read_text("ascii"))
    return folder / "pem"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--port", type=int, default=0)
    parser.add_argument("--user", default="appuser")
    parser.add_argument("--password", default="tonal")
    parser.add_argument("--database", default="SampleAgency")
    parser.add_argument("--sqlite", help="a database file, or a .sql script")
    parser.add_argument("--answers", type=Path, help="a JSON file of scripted answers")
    parser.add_argument("--log", help="the file that logins and statements are appended to")
    parser.add_argument("--tls", action="store_true", help="offer encryption")
    parser.add_argument("--mute", action="store_true", help="accept connections and say nothing")
    options = parser.parse_args()
    options.answers = json.loads(options.answers.read_text("utf-8")) if options.answers else []
    options.certificate = new_certificate() if options.tls else None
    listener = socket.create_server(("127.0.0.1", options.port))
    print(listener.getsockname()[1], flush=True)
    while True:
        session = Session(listener.accept()[0], options)
        threading.Thread(target=session.run, daemon=True).start()


if __name__ == "__main__":
    main()
