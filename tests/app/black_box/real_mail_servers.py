"""Mail servers as agencies have them, each on a free port of 127.0.0.1.

Both take mail over TLS only and from one user only, who logs in by the one mechanism that the
server offers.
"""

import asyncio
import logging
import os
import pwd
import re
import shutil
import socket
import ssl
import subprocess
import tempfile
import threading
from pathlib import Path

from aiosmtpd.smtp import SMTP, AuthResult

from machine import FAKETIME, Message, wait_until

CAN_RUN_POSTFIX = os.geteuid() == 0

USER = "office"


def make_certificate(folder):
    """Makes a key and a certificate for this machine that nobody has signed; returns the file with
    both and the one with the certificate alone."""
    certificate = folder / "certificate.pem"
    both = folder / "key and certificate.pem"
    before_any_run = {"LD_PRELOAD": str(FAKETIME), "FAKETIME": "2026-01-01 00:00:00"}
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
         "-nodes", "-days", "3650", "-subj", "/CN=localhost",
         "-addext", "subjectAltName=DNS:localhost,IP:127.0.0.1",
         "-keyout", both, "-out", certificate],
        env={"PATH": os.environ["PATH"], **before_any_run}, check=True, capture_output=True,
        timeout=60)
    with both.open("ab") as file:
        file.write(certificate.read_bytes())
    return both, certificate


class Aiosmtpd:
    """In a thread of the test."""

    def __init__(self, certificate, password, mechanism):
        self.messages, self.logins = [], 0
        self.user_and_password = (USER.encode(), password.encode())
        # A client that goes away in the handshake is what some tests want.
        logging.getLogger("mail.log").setLevel(logging.CRITICAL)
        tls = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
        tls.load_cert_chain(certificate)
        self.loop = asyncio.new_event_loop()
        server = self.loop.run_until_complete(self.loop.create_server(
            lambda: SMTP(
                self, hostname="localhost", enable_SMTPUTF8=True, loop=self.loop, tls_context=tls,
                require_starttls=True, auth_required=True, authenticator=self.authenticate,
                auth_exclude_mechanism={"PLAIN", "LOGIN"} - {mechanism}),
            "127.0.0.1", 0))
        self.port = server.sockets[0].getsockname()[1]
        self.thread = threading.Thread(target=self.loop.run_forever, daemon=True)
        self.thread.start()

    def stop(self):
        self.loop.call_soon_threadsafe(self.loop.stop)
        self.thread.join()

    def authenticate(self, server, session, envelope, mechanism, login):
        self.logins += 1
        accepted = (login.login, login.password) == self.user_and_password
        return AuthResult(success=accepted, handled=False, auth_data=(mechanism, login.login))

    async def handle_DATA(self, server, session, envelope):
        mechanism, user = session.auth_data
        self.messages.append(Message(envelope.content, {
            "from": envelope.mail_from, "to": envelope.rcpt_tos, "tls": session.ssl is not None,
            "mechanism": mechanism, "user": user.decode()}))
        return "250 filed"

    def login_attempts(self, sessions):
        """How often a client tried to log in, in so many sessions."""
        return self.logins


class Postfix:
    """An instance with configuration, queue and users of its own, which delivers into a Maildir.

    Postfix hands a message on after it has told the client that it has it, so what it shows is
    waited for."""

    # Of the master process, for a test that could not end its server: longer than any test takes.
    LONGEST_LIFE_SECONDS = 300

    REALM = "sunset.example"
    QUEUES = ("active bounce corrupt defer deferred flush hold incoming private public saved "
              "trace").split()
    MAIN = """
compatibility_level = 3.6
queue_directory = {folder}/queue
data_directory = {folder}/data
maillog_file = {folder}/log
maillog_file_prefixes = {folder}
inet_protocols = ipv4
myhostname = mail.{realm}
mydestination =
alias_maps =
alias_database =
local_recipient_maps =
virtual_mailbox_domains = example.com
virtual_mailbox_base = {folder}/mail
virtual_mailbox_maps = static:everybody/
virtual_uid_maps = static:{uid}
virtual_gid_maps = static:{gid}
smtpd_tls_chain_files = {folder}/certificate.pem
smtpd_tls_security_level = encrypt
smtpd_tls_received_header = yes
smtpd_sasl_auth_enable = yes
smtpd_sasl_authenticated_header = yes
smtpd_sasl_local_domain = {realm}
smtpd_relay_restrictions = permit_sasl_authenticated, reject
"""
    MASTER = """
127.0.0.1:{port} inet n - n - - smtpd
cleanup unix n - n - 0 cleanup
qmgr unix n - n 300 1 qmgr
tlsmgr unix - - n 1000? 1 tlsmgr
rewrite unix - - n - - trivial-rewrite
bounce unix - - n - 0 bounce
defer unix - - n - 0 bounce
trace unix - - n - 0 bounce
proxymap unix - - n - - proxymap
anvil unix - - n - 1 anvil
virtual unix - n n - - virtual
postlog unix-dgram n - n - 1 postlogd
"""
    SASL = """
pwcheck_method: auxprop
auxprop_plugin: sasldb
sasldb_path: {folder}/users
mech_list: {mechanism}
"""

    def __init__(self, certificate, password, mechanism):
        # Its processes change to users of their own, and its settings take no blank in a path.
        self.folder = Path(tempfile.mkdtemp(prefix="postfix-"))
        self.folder.chmod(0o711)
        self.configuration = self.folder / "configuration"
        self.log_file = self.folder / "log"
        self.process = None
        try:
            self.configure(certificate, mechanism)
            self.add_user(password)
            self.start()
        except BaseException:
            self.stop()
            raise

    def configure(self, certificate, mechanism):
        reader = pwd.getpwnam("nobody")
        postfix = pwd.getpwnam("postfix")
        for name, owner in (("configuration", 0), ("configuration/sasl", 0), ("queue", 0),
                            ("queue/pid", 0), ("data", postfix.pw_uid), ("mail", reader.pw_uid),
                            *((f"queue/{name}", postfix.pw_uid) for name in self.QUEUES)):
            (self.folder / name).mkdir()
            os.chown(self.folder / name, owner, -1)
        shutil.copyfile(certificate, self.folder / "certificate.pem")
        (self.folder / "certificate.pem").chmod(0o600)
        main = self.configuration / "main.cf"
        main.write_text(self.MAIN.format(
            folder=self.folder, realm=self.REALM, uid=reader.pw_uid, gid=reader.pw_gid))
        os.utime(main, (0, 0))  # each process waits for a file that is being changed to settle
        (self.configuration / "sasl" / "smtpd.conf").write_text(
            self.SASL.format(folder=self.folder, mechanism=mechanism))

    def add_user(self, password):
        users = self.folder / "users"
        self.run("saslpasswd2", "-p", "-c", "-f", users, "-u", self.REALM, USER, input=password)
        shutil.chown(users, "postfix")

    def start(self):
        attempts = 5  # another process may take the port first
        for _ in range(attempts):
            with socket.create_server(("127.0.0.1", 0)) as free:
                self.port = free.getsockname()[1]
            (self.configuration / "master.cf").write_text(self.MASTER.format(port=self.port))
            master = Path(self.run("postconf", "-dh", "daemon_directory").strip()) / "master"
            self.process = subprocess.Popen(
                [master, "-c", self.configuration, "-e", str(self.LONGEST_LIFE_SECONDS)],
                stdin=subprocess.DEVNULL)
            wait_until(lambda: "daemon started" in self.log() or self.process.poll() is not None,
                       "Postfix does not start")
            if self.process.poll() is None:
                return
        raise RuntimeError("Postfix does not start:\n" + self.log())

    @staticmethod
    def run(*command, input=None):
        return subprocess.run(command, input=input, stdout=subprocess.PIPE, check=True, text=True,
                              timeout=60).stdout

    def stop(self):
        """Ends the master, which ends its children."""
        if self.process:
            self.process.terminate()
            self.process.wait()
        shutil.rmtree(self.folder)

    def log(self):
        return self.log_file.read_text() if self.log_file.exists() else ""

    def login_attempts(self, sessions):
        def ended():
            return re.findall(r": disconnect from (.*)", self.log())

        wait_until(lambda: len(ended()) >= sessions, "there are fewer sessions:\n" + self.log())
        return sum(int(count) for count in re.findall(r" auth=(?:\d+/)?(\d+)", "\n".join(ended())))

    def is_queue_empty(self):
        return not any(path.is_file() for name in ("incoming", "active", "deferred")
                       for path in (self.folder / "queue" / name).rglob("*"))

    @property
    def messages(self):
        """In the order of the recipients, for they come in any."""
        wait_until(self.is_queue_empty, "Postfix keeps a message")
        messages = [self.message(path.read_bytes())
                    for path in (self.folder / "mail").glob("everybody/new/*")]
        return sorted(messages, key=lambda message: message.envelope["to"])

    def message(self, raw):
        message = Message(raw, {})
        received = message.parsed["Received"]
        queue_id = re.search(r"with E?SMTP\w* id (\w+)", received)[1]
        login = re.search(
            rf" {queue_id}: client=.*, sasl_method=(\S+), sasl_username=(\S+)", self.log())
        message.envelope = {
            "from": message.parsed["Return-Path"].strip("<>"),
            "to": [message.parsed["X-Original-To"]],
            "tls": "(using TLSv1." in received,
            "mechanism": login and login[1],
            "user": login and login[2].removesuffix("@" + self.REALM),
        }
        return message
