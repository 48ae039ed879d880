"""Whole runs that deliver to the mail servers that agencies have, over TLS and with a login."""

import unittest

import wine
from machine import MAIL, RUNNING, SchedulerTest
from real_mail_servers import CAN_RUN_POSTFIX, USER, Aiosmtpd, Postfix, make_certificate

PASSWORD = "S3cret ü;pass"
CLIENTS = {"ann@example.com": "Ann", "bob@example.com": "Bob", "zoe@example.com": "Zoë"}
LETTER = ".\n..[First Name]\nRCPT TO:<eve@example.com>\n" + "é" * 3000 + "\n.\nend\n"

REFUSED = "ESMTP Authentication failed."
BROKEN = "There was a problem with the connection;and a socket error occurred."
NO_LOGIN = "The selected ESMTP Authentication mode;is not supported by the server."


@wine.not_under("the trusted certificates are in a store of Windows")
class MailServerTest(SchedulerTest):
    def setUp(self):
        super().setUp()
        self.server_certificate, self.certificate = make_certificate(self.folder)
        self.trusts_server = False
        self.body_file = self.write_file("work/letter.txt", LETTER.replace("\n", "\r\n"))
        for email, first_name in CLIENTS.items():
            self.add_client(email, FirstName=first_name)

    def environment(self, now):
        trust = {"SSL_CERT_FILE": str(self.certificate)} if self.trusts_server else {}
        return super().environment(now) | trust

    def start_server(self, kind, mechanism="PLAIN"):
        server = kind(self.server_certificate, PASSWORD, mechanism)
        self.addCleanup(server.stop)
        return server

    def run_with(self, server, host="127.0.0.1", password=PASSWORD, security=""):
        self.registry[MAIL].update(
            EmailServer=f"{host}:{server.port}", EmailAuthenticate="True", EmailUser=USER,
            EmailPassword=self.encipher(password), EmailSecurity=security)
        self.log_file.unlink(missing_ok=True)
        self.assert_ended_well(self.run_scheduler())

    def assert_failed(self, reason):
        self.assert_sent(*[line for email in CLIENTS for line in ("Failed: " + email, reason)])

    def check_delivery(self, kind, mechanism, **settings):
        server = self.start_server(kind, mechanism)
        self.run_with(server, **settings)
        self.assert_sent(*["Sent: " + email for email in CLIENTS])
        messages = server.messages
        self.assertEqual(
            [message.envelope for message in messages],
            [{"from": "office@sunset.example", "to": [email], "tls": True, "mechanism": mechanism,
              "user": USER} for email in CLIENTS])
        for message, first_name in zip(messages, CLIENTS.values()):
            self.assertEqual(message.parsed["Subject"], "Hello " + first_name)
            self.assertEqual(message.text, LETTER.replace("[First Name]", first_name))
        self.assertEqual(server.login_attempts(sessions=1), 1)

    def check_deliveries(self, kind, *cases):
        self.trusts_server = True
        for mechanism, host, security in cases:
            with self.subTest(mechanism=mechanism):
                self.check_delivery(kind, mechanism, host=host, security=security)

    def check_wrong_password(self, kind, *mechanisms):
        self.trusts_server = True
        for mechanism in mechanisms:
            with self.subTest(mechanism=mechanism):
                server = self.start_server(kind, mechanism)
                self.run_with(server, password=PASSWORD[:-1])
                self.assert_failed(REFUSED)
                self.assertEqual(server.login_attempts(sessions=len(CLIENTS)), len(CLIENTS))
                self.assertEqual(server.messages, [])

    def check_certificate_that_nobody_signed(self, kind):
        """No password is sent to a server that nobody vouches for, unless the agency wants so."""
        server = self.start_server(kind)
        sessions = 0
        for security, outcome in (("", BROKEN), ("required", BROKEN), ("none", NO_LOGIN)):
            with self.subTest(security=security):
                self.run_with(server, security=security)
                self.assert_failed(outcome)
                sessions += len(CLIENTS)
                self.assertEqual(server.login_attempts(sessions), 0)
                self.assertEqual(server.messages, [])
        self.check_delivery(kind, "PLAIN", security="unverified")


class AiosmtpdServer(MailServerTest):
    def test_delivery(self):
        self.check_deliveries(
            Aiosmtpd, ("PLAIN", "127.0.0.1", ""), ("LOGIN", "localhost", "required"))

    def test_wrong_password(self):
        self.check_wrong_password(Aiosmtpd, "PLAIN", "LOGIN")

    def test_certificate_that_nobody_signed(self):
        self.check_certificate_that_nobody_signed(Aiosmtpd)


@unittest.skipUnless(CAN_RUN_POSTFIX, "the master of Postfix runs as root only")
class PostfixServer(MailServerTest):
    def test_delivery(self):
        self.check_deliveries(
            Postfix, ("PLAIN", "127.0.0.1", ""), ("LOGIN", "localhost", "required"),
            ("CRAM-MD5", "localhost", ""), ("SCRAM-SHA-256", "127.0.0.1", "required"))

    def test_wrong_password(self):
        self.check_wrong_password(Postfix, "PLAIN", "SCRAM-SHA-256")

    def test_certificate_that_nobody_signed(self):
        self.check_certificate_that_nobody_signed(Postfix)
