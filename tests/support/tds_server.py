"""A SQL Server for tests: the parts of TDS 7.4 ([MS-TDS]) that a client uses, on loopback.

Prints its port once it listens, and serves until it is ended. What it answers comes from a SQLite
file, which stands for the database, and before that from a JSON file of scripted answers:

    [{"statement": "SELECT 1", "procedure": false, "steps": [STEP, ...]}, ...]

A STEP is one of
    {"columns": [["Email", "nvarchar(120)"], ...], "rows": [ROW or STEP, ...], "repeat": 1}
    {"count": 3}  (null: a statement that counts no rows)    {"database": "Other"}
    {"info": [NUMBER, SEVERITY, TEXT]}                       {"error": [NUMBER, SEVERITY, TEXT]}
    {"wait": SECONDS}    {"silence": true}    {"break": "close" or "reset"}
A type may end in "not null". Exact numbers, dates and identifiers are written as text.

Each login and each statement is a line of the log file: login, user, password, database, "plain" or
"encrypted", application, or statement and its text; tabs between them, line ends written "\\n".
"""

import argparse
import contextlib
import json
import select
import socket
import socketserver
import ssl
import struct
import subprocess
import tempfile
from pathlib import Path

from tds_values import COLLATION, long_text, short_text, wire_type, with_length
from transact_sql import Database

SQL_BATCH, REPLY, ATTENTION, PRELOGIN = 1, 4, 6, 18
END_OF_MESSAGE = 1
PACKET_ROOM = 4096 - 8
ERROR_MESSAGE, INFORMATION = 0xAA, 0xAB
DONE, DONE_PROCEDURE, DONE_IN_PROCEDURE = 0xFD, 0xFE, 0xFF
MORE, ERROR, COUNT, ATTENTION_ACKNOWLEDGED = 0x01, 0x02, 0x10, 0x20
ENCRYPT_ALL, NO_ENCRYPTION = 1, 2
USER = "appuser"
VERSION = b"\x10\0\x10\0"  # SQL Server 2022


def packet(data, status, kind=REPLY):
    return struct.pack(">BBHHBB", kind, status, len(data) + 8, 51, 1, 0) + data


class Channel:
    """Messages over a socket, in TLS once both sides have agreed on it."""

    def __init__(self, peer):
        self.peer, self.tls, self.pending = peer, None, bytearray()
        self.incoming, self.outgoing = ssl.MemoryBIO(), ssl.MemoryBIO()

    def receive(self, count):
        if data := self.peer.recv(count):
            return data
        raise EOFError

    def read(self, count):
        data = b""
        while len(data) < count:
            missing = count - len(data)
            try:
                data += self.tls.read(missing) if self.tls else self.receive(missing)
            except ssl.SSLWantReadError:
                self.incoming.write(self.receive(65536))
        return data

    def write(self, data):
        if self.tls:
            self.tls.write(data)
            data = self.outgoing.read()
        self.peer.sendall(data)

    def read_message(self):
        message, status = b"", 0
        while not status & END_OF_MESSAGE:
            kind, status, size = struct.unpack(">BBH4x", self.read(8))
            message += self.read(size - 8)
        return kind, message

    def reply(self, data):
        """Adds to the message; the last packet's worth stays back for its end."""
        self.pending += data
        if len(self.pending) > PACKET_ROOM:
            full = (len(self.pending) - 1) // PACKET_ROOM * PACKET_ROOM
            self.write(b"".join(packet(self.pending[at:at + PACKET_ROOM], 0)
                                for at in range(0, full, PACKET_ROOM)))
            del self.pending[:full]

    def end_reply(self, data=b""):
        self.reply(data)
        self.write(packet(self.pending, END_OF_MESSAGE))
        self.pending.clear()

    def break_off(self, how):
        self.write(packet(self.pending, 0))
        if how == "reset":
            self.peer.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.peer.close()
        raise EOFError

    def fall_silent(self):
        while True:
            self.receive(4096)

    def start_tls(self, context):
        tls = context.wrap_bio(self.incoming, self.outgoing, server_side=True)
        while not tls.version():
            self.incoming.write(self.read_message()[1])
            with contextlib.suppress(ssl.SSLWantReadError):
                tls.do_handshake()
            if data := self.outgoing.read():
                self.write(packet(data, END_OF_MESSAGE, PRELOGIN))
        self.tls = tls


def message_token(token, number, severity, text):
    body = struct.pack("<IBB", number, 1, severity) + long_text(text)
    body += short_text("TESTSERVER") + short_text("") + struct.pack("<I", 1)
    return bytes([token]) + with_length("<H", body)


def environment_change(kind, new, old):
    return b"\xe3" + with_length("<H", bytes([kind]) + new + old)


def database_change(new, old):
    return (environment_change(1, short_text(new), short_text(old))
            + message_token(INFORMATION, 5701, 0, f"Changed database context to '{new}'."))


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
    """The user, the password, the database and the application."""
    def text(place):
        offset, length = struct.unpack_from("<HH", data, place)
        return data[offset:offset + 2 * length]

    password = bytes((byte ^ 0xA5) >> 4 | ((byte ^ 0xA5) << 4 & 0xF0) for byte in text(44))
    return [field.decode("utf-16-le") for field in (text(40), password, text(68), text(48))]


class Session(socketserver.BaseRequestHandler):
    """What happens on one connection, with the state that it keeps between statements."""

    def setup(self):
        self.request.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self.channel, self.options = Channel(self.request), self.server.options
        self.database = self.options.database
        self.rows = Database(self.options.sqlite, lambda: self.database)

    def handle(self):
        try:
            if self.options.mute:
                self.channel.fall_silent()
            if self.log_in(self.agree_on_encryption()):
                while True:
                    self.take_message(*self.channel.read_message())
        except (EOFError, OSError):
            pass  # the connection is over

    def log(self, *fields):
        if self.options.log:
            line = "\t".join(field.replace("\r", "\\r").replace("\n", "\\n") for field in fields)
            with open(self.options.log, "a", encoding="utf-8") as log:
                log.write(line + "\n")

    def agree_on_encryption(self):
        _, offered = self.channel.read_message()
        place = next(at for at in range(0, 60, 5) if offered[at] == 1)
        wanted = offered[struct.unpack_from(">H", offered, place + 1)[0]]
        is_encrypted = bool(self.options.tls) and wanted == ENCRYPT_ALL
        places = struct.pack(">BHHBHHB", 0, 11, 6, 1, 17, 1, 0xFF)
        mode = ENCRYPT_ALL if is_encrypted else NO_ENCRYPTION
        self.channel.end_reply(places + VERSION + b"\0\0" + bytes([mode]))
        if is_encrypted:
            self.channel.start_tls(self.options.tls)
        return is_encrypted

    def log_in(self, is_encrypted):
        user, password, database, application = login_fields(self.channel.read_message()[1])
        encryption = "encrypted" if is_encrypted else "plain"
        self.log("login", user, password, database, encryption, application)
        if (user, password) == (USER, self.options.password):
            if database in ("", self.database):
                self.welcome()
                return True
            text = f'Cannot open database "{database}" requested by the login. The login failed.'
            self.channel.reply(message_token(ERROR_MESSAGE, 4060, 11, text))
        self.refuse(18456, 14, f"Login failed for user '{user}'.")
        return False

    def welcome(self):
        product = b"\x01\x74\0\0\x04" + short_text("Microsoft SQL Server") + VERSION
        self.channel.end_reply(
            database_change(self.database, "master")
            + environment_change(7, with_length("<B", COLLATION), b"\0")
            + b"\xad" + with_length("<H", product) + done(DONE, 0))

    def refuse(self, *error):
        self.take_step({"error": error}, DONE, 0)
        self.channel.end_reply()

    def take_message(self, kind, data):
        if kind == SQL_BATCH:
            with contextlib.suppress(InterruptedError):
                self.answer(data[struct.unpack_from("<I", data)[0]:].decode("utf-16-le"))
        elif kind == ATTENTION:
            self.channel.end_reply(done(DONE, ATTENTION_ACKNOWLEDGED))
        else:
            self.refuse(0, 16, f"No support for messages of type {kind}.")

    def answer(self, statement):
        self.log("statement", statement)
        scripted = self.options.answers.get(statement) or {"steps": self.rows.run(statement)}
        steps, procedure = scripted["steps"], scripted.get("procedure", False)
        finished = DONE_IN_PROCEDURE if procedure else DONE
        for place, step in enumerate(steps):
            last = place == len(steps) - 1 and not procedure
            self.take_step(step, finished, 0 if last else MORE)
        if procedure:
            self.channel.reply(b"\x79\0\0\0\0" + done(DONE_PROCEDURE, 0))
        elif not steps or not steps[-1].keys() & {"columns", "count", "error"}:
            self.channel.reply(done(DONE, 0))
        self.channel.end_reply()

    def take_step(self, step, finished, more):
        match step:
            case {"columns": columns, "rows": rows}:
                self.channel.reply(describe_columns(columns))
                count = self.send_rows(columns, rows, step.get("repeat", 1), finished)
                self.channel.reply(done(finished, more, count))
            case {"count": count}:
                self.channel.reply(done(finished, more, count))
            case {"info": information}:
                self.channel.reply(message_token(INFORMATION, *information))
            case {"error": error}:
                self.channel.reply(message_token(ERROR_MESSAGE, *error))
                self.channel.reply(done(finished, more | ERROR))
            case {"database": name}:
                self.channel.reply(database_change(name, self.database))
                self.database = name
            case {"wait": seconds}:
                if select.select([self.request], [], [], seconds)[0]:
                    raise InterruptedError  # by an attention, which is the next message
            case {"silence": _}:
                self.channel.fall_silent()
            case {"break": how}:
                self.channel.break_off(how)

    def send_rows(self, columns, rows, repeat, finished):
        encoders = [wire_type(declared)[1] for _, declared in columns]
        block, count = bytearray(), 0
        for row in rows:
            if isinstance(row, dict):
                self.channel.reply(block)
                block.clear()
                self.take_step(row, finished, MORE)
            else:
                block += b"\xd1" + b"".join(encode(value) for encode, value in zip(encoders, row))
                count += 1
        for _ in range(repeat):
            self.channel.reply(block)
        return count * repeat


def tls_context():
    """Encryption with a key and a certificate that are made for this run."""
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.maximum_version = ssl.TLSVersion.TLSv1_2  # nothing may follow the handshake
    with tempfile.NamedTemporaryFile() as pem:
        subprocess.run(
            ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
             "-nodes", "-subj", "/CN=localhost", "-keyout", pem.name, "-out", pem.name],
            check=True, stderr=subprocess.DEVNULL)
        context.load_cert_chain(pem.name)
    return context


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--password", default="tonal")
    parser.add_argument("--database", default="SampleAgency")
    parser.add_argument("--sqlite", help="a database file")
    parser.add_argument("--answers", type=Path, help="a JSON file of scripted answers")
    parser.add_argument("--log", help="the file that logins and statements are appended to")
    parser.add_argument("--tls", action="store_true", help="offer encryption")
    parser.add_argument("--mute", action="store_true", help="accept connections and say nothing")
    options = parser.parse_args()
    scripted = json.loads(options.answers.read_text("utf-8")) if options.answers else []
    options.answers = {answer["statement"]: answer for answer in scripted}
    options.tls = tls_context() if options.tls else None
    server = socketserver.ThreadingTCPServer(("127.0.0.1", 0), Session)
    server.daemon_threads, server.options = True, options
    print(server.server_address[1], flush=True)
    server.serve_forever()


if __name__ == "__main__":
    main()
