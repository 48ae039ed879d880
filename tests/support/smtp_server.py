#!/usr/bin/python3
"""A scripted SMTP server for tests: it keeps what it receives and misbehaves where it is told to.

  smtp_server.py --port-file FILE --mailbox FOLDER --script JSON [--transcript FILE]

It listens on a free port of 127.0.0.1 (`--host ::1` for IPv6), writes the port to FILE once it
accepts connections, and runs until it is terminated. Each message that arrives whole is written to
FOLDER as 0001.eml, 0002.eml, ... in the order of arrival (dot-stuffing undone), beside 0001.json,
its envelope: "from", "to" (a list), "mail" (the command's parameters), "connection" (1 is the
first), "tls" and "user" (who authenticated, else null). The transcript holds one line a command:
the connection, a blank, the command.

The script is JSON, inline or the name of a file that holds it; a file is read again for every
connection, and where it has changed all counting starts afresh. Every key is optional:

  "extensions":    EHLO lines, by default ["PIPELINING", "8BITMIME", "SIZE 10485760", "SMTPUTF8"]
  "users":         {"name": "password"}, for AUTH (add an "AUTH ..." extension)
  "certificate":   PEM file with key and certificate, for "STARTTLS" in extensions
  "implicit_tls":  true to speak TLS from the first byte
  "wrong_signature": true to answer SCRAM with a signature that proves nothing
  "faults":        a list of faults; the first that fits a step happens, and counts as used then

A fault is {"at": STEP, "do": ACTION}, and optionally "nth" (the occurrence of the step in the life
of the server, 1 is the first), "times" (how often it may happen) and "match" (a text that the
command's parameter must hold, or for "message" the message).

  STEP    greeting, EHLO, HELO, STARTTLS, AUTH, MAIL, RCPT, DATA, RSET, QUIT,
          AUTH-PLAIN, AUTH-CRAM-MD5 and so on (before the mechanism begins; AUTH is at its end),
          content (after 354, before anything of the message is read),
          message (after the final dot), between (after the reply to the final dot)
  ACTION  "450 text" or any other text that begins with three digits: that reply
          "421 text close": any reply and "close" after it
          close, reset     the connection ends (in order, or with a RST)
          garbage          a line that is no SMTP reply
          pieces           the regular reply, byte by byte
          huge             a reply line of 10 MB
          endless          a multi-line reply that never ends
          silence          no reply, and nothing more is read
          inject           the regular reply and, in the same packet, a further "250 injected"
"""

import argparse
import base64
import hashlib
import hmac
import json
import os
import secrets
import socket
import ssl
import struct
import threading
import time


class Server:
    def __init__(self, mailbox, script, transcript):
        self.mailbox = mailbox
        self.script_source = script
        self.script_text = None
        self.transcript = open(transcript, "a", buffering=1)
        self.lock = threading.Lock()
        self.messages = 0
        self.read_script()

    def read_script(self):
        text = self.script_source
        if not text.lstrip().startswith("{"):
            with open(text, encoding="utf-8") as file:
                text = file.read()
        if text != self.script_text:
            self.script_text = text
            self.script = json.loads(text)
            self.occurrences = {}
            self.used = [0] * len(self.script.get("faults", []))

    def fault(self, step, parameter):
        """The action for this occurrence of the step, or None."""
        with self.lock:
            count = self.occurrences[step] = self.occurrences.get(step, 0) + 1
            for index, fault in enumerate(self.script.get("faults", [])):
                if (fault["at"] == step
                        and fault.get("nth", count) == count
                        and fault.get("match", "") in parameter
                        and self.used[index] < fault.get("times", 1 << 30)):
                    self.used[index] += 1
                    return fault["do"]
        return None

    def note(self, connection, line):
        with self.lock:
            self.transcript.write(f"{connection} {line}\n")

    def keep(self, content, envelope):
        with self.lock:
            self.messages += 1
            name = os.path.join(self.mailbox, f"{self.messages:04}")
            with open(name + ".json", "w", encoding="utf-8") as file:
                json.dump(envelope, file)
            with open(name + ".part", "wb") as file:
                file.write(content)
            os.replace(name + ".part", name + ".eml")


class Session:
    def __init__(self, server, number, connection):
        self.server = server
        self.number = number
        self.socket = connection
        self.script = server.script
        self.input = b""
        self.output = b""
        self.tls = False
        self.user = None
        self.forget()

    def forget(self):
        self.sender = None
        self.mail_parameters = ""
        self.recipients = []

    # Bytes.

    def receive(self):
        self.flush()
        data = self.socket.recv(65536)
        if not data:
            raise EOFError
        self.input += data

    def read_line(self):
        while b"\n" not in self.input:
            self.receive()
        line, self.input = self.input.split(b"\n", 1)
        return line.rstrip(b"\r").decode("utf-8", "replace")

    def read_content(self):
        while not self.input.startswith(b".\r\n") and b"\r\n.\r\n" not in self.input:
            self.receive()
        if self.input.startswith(b".\r\n"):
            content, self.input = b"", self.input[3:]
        else:
            end = self.input.index(b"\r\n.\r\n")
            content, self.input = self.input[:end + 2], self.input[end + 5:]
        lines = content.split(b"\r\n")
        return b"\r\n".join(line[1:] if line.startswith(b".") else line for line in lines)

    def flush(self):
        if self.output:
            self.socket.sendall(self.output)
            self.output = b""

    def reply(self, text):
        # Answers to commands that came together leave together, before more is read.
        self.output += text.encode() + b"\r\n"

    # One step of the dialogue: the regular reply, or what the script wants instead. Returns
    # whether the step took its regular course.

    def step(self, name, regular, parameter=""):
        if self.input and "PIPELINING" not in self.script.get("extensions", ["PIPELINING"]):
            raise ValueError("commands came together")
        action = self.server.fault(name, parameter)
        if action is None:
            self.reply(regular)
            return True
        if action == "pieces":
            self.flush()
            for byte in regular.encode() + b"\r\n":
                self.socket.sendall(bytes([byte]))
                time.sleep(0.001)
            return True
        if action == "inject":
            self.flush()
            self.socket.sendall(regular.encode() + b"\r\n250 injected\r\n")
            return True
        self.misbehave(action)
        return False

    def meets_fault(self, step, parameter=""):
        """Does what the script wants at a step that has no regular reply."""
        action = self.server.fault(step, parameter)
        if action:
            self.misbehave(action)
        return bool(action)

    def misbehave(self, action):
        self.flush()
        if action == "close":
            raise EOFError
        if action == "reset":
            self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            raise EOFError
        if action == "garbage":
            self.socket.sendall(b"\x00\xff<html>this is no mail server</html>\r\n")
        elif action == "huge":
            self.socket.sendall(b"250 ")
            for _ in range(1000):
                self.socket.sendall(b"x" * 10_000)
            self.socket.sendall(b"\r\n")
        elif action == "endless":
            while True:
                self.socket.sendall(b"250-and another line\r\n" * 100)
        elif action == "silence":
            threading.Event().wait()
        elif action[:3].isdigit():
            closes = action.endswith(" close")
            self.reply(action.removesuffix(" close"))
            if closes:
                self.flush()
                raise EOFError
        else:
            raise ValueError(f"unknown action {action}")

    # The dialogue.

    def run(self):
        if self.script.get("implicit_tls"):
            self.start_tls()
        self.step("greeting", "220 scripted.test ESMTP")
        while True:
            line = self.read_line()
            self.server.note(self.number, line)
            verb, _, parameter = line.partition(" ")
            verb = verb.upper()
            handler = getattr(self, "on_" + verb.lower(), None)
            if handler:
                handler(parameter)
            else:
                self.reply("500 unknown command")

    def on_ehlo(self, parameter):
        self.forget()
        lines = ["scripted.test"] + self.script.get(
            "extensions", ["PIPELINING", "8BITMIME", "SIZE 10485760", "SMTPUTF8"])
        if self.tls:
            lines = [line for line in lines if line != "STARTTLS"]
        regular = [f"250-{line}" for line in lines[:-1]] + [f"250 {lines[-1]}"]
        self.step("EHLO", "\r\n".join(regular), parameter)

    def on_helo(self, parameter):
        self.forget()
        self.step("HELO", "250 scripted.test", parameter)

    def on_starttls(self, _):
        if "certificate" not in self.script or self.tls:
            self.reply("502 not offered")
        elif self.step("STARTTLS", "220 go ahead"):
            self.flush()
            self.start_tls()

    def start_tls(self):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(self.script["certificate"])
        self.socket = context.wrap_socket(self.socket, server_side=True)
        self.input = b""
        self.tls = True

    def on_auth(self, parameter):
        mechanism, _, initial = parameter.partition(" ")
        handler = getattr(self, "auth_" + mechanism.lower().replace("-", "_"), None)
        if handler is None:
            self.reply("504 unknown mechanism")
            return
        if self.meets_fault("AUTH-" + mechanism.upper()):
            return
        user = handler(initial)
        if user is None:
            self.step("AUTH", "535 5.7.8 refused", parameter)
        elif self.step("AUTH", "235 welcome", parameter):
            self.user = user

    def ask(self, text):
        self.reply("334 " + base64.b64encode(text).decode())
        line = self.read_line()
        self.server.note(self.number, line)
        return base64.b64decode(line)

    def password(self, user):
        return self.script.get("users", {}).get(user)

    def auth_plain(self, initial):
        _, user, password = base64.b64decode(initial).decode().split("\0")
        return user if self.password(user) == password else None

    def auth_login(self, _):
        user = self.ask(b"Username:").decode()
        password = self.ask(b"Password:").decode()
        return user if self.password(user) == password else None

    def auth_cram_md5(self, _):
        challenge = b"<%d.%d@scripted.test>" % (secrets.randbelow(1 << 30), time.time())
        user, _, digest = self.ask(challenge).decode().rpartition(" ")
        password = self.password(user)
        wanted = password and hmac.new(password.encode(), challenge, hashlib.md5).hexdigest()
        return user if digest == wanted else None

    def auth_scram_sha_256(self, initial):  # RFC 5802 and RFC 7677
        bare = base64.b64decode(initial).decode().split(",", 2)[2]
        fields = dict(part.split("=", 1) for part in bare.split(","))
        user = fields["n"]
        password = self.password(user) or secrets.token_hex()
        salt, count = secrets.token_bytes(16), 4096
        nonce = fields["r"] + secrets.token_hex(8)
        server_first = f"r={nonce},s={base64.b64encode(salt).decode()},i={count}"
        final = self.ask(server_first.encode()).decode()
        without_proof, _, proof = final.rpartition(",p=")

        def mac(key, text):
            return hmac.new(key, text, hashlib.sha256).digest()

        salted = hashlib.pbkdf2_hmac("sha256", password.encode(), salt, count)
        signed = f"{bare},{server_first},{without_proof}".encode()
        stored = hashlib.sha256(mac(salted, b"Client Key")).digest()
        key = bytes(a ^ b for a, b in zip(base64.b64decode(proof), mac(stored, signed)))
        if hashlib.sha256(key).digest() != stored or not without_proof.endswith(nonce):
            return None
        signature = mac(mac(salted, b"Server Key"), signed)
        if self.script.get("wrong_signature"):
            signature = bytes(32)
        self.ask(b"v=" + base64.b64encode(signature))
        return user

    def on_mail(self, parameter):
        path, _, rest = parameter.partition(">")
        if self.step("MAIL", "250 sender ok" if self.sender is None else "503 again", parameter):
            self.sender, self.mail_parameters = path.partition("<")[2], rest.strip()

    def on_rcpt(self, parameter):
        regular = "503 no sender" if self.sender is None else "250 recipient ok"
        if self.step("RCPT", regular, parameter) and self.sender is not None:
            self.recipients.append(parameter.partition(">")[0].partition("<")[2])

    def on_data(self, parameter):
        if not self.recipients:
            self.reply("554 no valid recipients")
            return
        if not self.step("DATA", "354 go ahead", parameter):
            return
        if self.meets_fault("content"):
            return
        content = self.read_content()
        envelope = {"from": self.sender, "to": self.recipients, "mail": self.mail_parameters,
                    "connection": self.number, "tls": self.tls, "user": self.user}
        self.server.keep(content, envelope)
        self.forget()
        self.step("message", "250 kept", content.decode("utf-8", "replace"))
        self.meets_fault("between")

    def on_rset(self, parameter):
        self.forget()
        self.step("RSET", "250 reset", parameter)

    def on_quit(self, parameter):
        self.step("QUIT", "221 bye", parameter)
        self.flush()
        raise EOFError


def serve(server, number, connection):
    session = Session(server, number, connection)
    try:
        connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        session.run()
    except (EOFError, OSError, ValueError):
        pass
    finally:
        session.socket.close()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--port-file", required=True)
    parser.add_argument("--mailbox", required=True)
    parser.add_argument("--script", required=True)
    parser.add_argument("--transcript", default=os.devnull)
    parser.add_argument("--host", default="127.0.0.1")
    options = parser.parse_args()

    os.makedirs(options.mailbox, exist_ok=True)
    server = Server(options.mailbox, options.script, options.transcript)

    family = socket.AF_INET6 if ":" in options.host else socket.AF_INET
    listener = socket.create_server((options.host, 0), family=family, backlog=64)
    with open(options.port_file + ".part", "w", encoding="ascii") as file:
        file.write(f"{listener.getsockname()[1]}\n")
    os.replace(options.port_file + ".part", options.port_file)
    number = 0
    while True:
        connection, _ = listener.accept()
        number += 1
        server.read_script()
        threading.Thread(target=serve, args=(server, number, connection), daemon=True).start()


if __name__ == "__main__":
    main()
