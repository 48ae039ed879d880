"""Whole runs that deliver to the mail servers that agencies have, over TLS and with a login."""

import unittest

import wine
from machine import MAIL, SchedulerTest
from real_mail_servers import CAN_RUN_POSTFIX, USER, Aiosmtpd, Postfix, make_certificate

PASSWORD = "S3cret ü;pass"
CLIENTS = {"ann@example.com": "Ann", "bob@example.com": "Bob",
           "zoe@example.com": "Zoë Wilhelmine Friederike Leonhardt-Weiß"}
# The last client's name makes a line of more than the 900 bytes that travel as they are.
LETTER = ".\n..\nRCPT TO:<eve@example.com>\n[First Name]" + "é" * 440 + "\n.\nend\n"
ENCODINGS = ["8bit", "8bit", "quoted-printable"]

REFUSED = "ESMTP Authentication failed."
BROKEN = "There was a problem with the connection;and a socket error occurred."
NO_LOGIN = "The selected ESMTP Authentication mode;is not supported by the server."


@wine.not_under("the trusted certificates are in a store of Windows")
class MailServerTest(SchedulerTest):
    def setUp(self):
        super().setUp()
        self.server_certificate, self.certificate = make_certificate(self.folder)
        self.trusts_server = True
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

    def assert_outcome(self, server, *outcome, host="127.0.0.1", password=PASSWORD, security="",
                       warning=""):
        """What becomes of each client's message: "Sent: " or "Failed: " and a reason."""
        self.registry[MAIL].update(
            EmailServer=f"{host}:{server.port}", EmailAuthenticate="True", EmailUser=USER,
            EmailPassword=self.encipher(password), EmailSecurity=security)
        self.assert_sends(
            *[line for email in CLIENTS for line in (outcome[0] + email, *outcome[1:])],
            warning=[warning] if warning else [])

    def check_delivery(self, kind, mechanism, host="127.0.0.1", security=""):
        server = self.start_server(kind, mechanism)
        self.assert_outcome(server, "Sent: ", host=host, security=security)
        messages = server.messages
        self.assertEqual(
            [message.envelope for message in messages],
            [{"from": "office@sunset.example", "to": [email], "tls": True, "mechanism": mechanism,
              "user": USER} for email in CLIENTS])
        self.assertEqual(
            [message.parsed["Content-Transfer-Encoding"] for message in messages], ENCODINGS)
        for message, first_name in zip(messages, CLIENTS.values()):
            self.assertEqual(message.parsed["Subject"], "Hello " + first_name)
            self.assertEqual(message.text, LETTER.replace("[First Name]", first_name))
        self.assertEqual(server.login_attempts(sessions=1), 1)

    def check_deliveries(self, kind, *cases):
        for case in cases:
            with self.subTest(case):
                self.check_delivery(kind, *case)

    def check_wrong_password(self, kind, *mechanisms):
        for mechanism in mechanisms:
            with self.subTest(mechanism=mechanism):
                server = self.start_server(kind, mechanism)
                self.assert_outcome(server, "Failed: ", REFUSED, password=PASSWORD[:-1],
                                    warning="AUTH " + mechanism + ' was answered "535')
                self.assertEqual(server.login_attempts(sessions=len(CLIENTS)), len(CLIENTS))
                self.assertEqual(server.messages, [])


class AiosmtpdServer(MailServerTest):
    def test_delivery(self):
        self.check_deliveries(Aiosmtpd, ("PLAIN",), ("LOGIN", "localhost", "required"))

    def test_wrong_password(self):
        self.check_wrong_password(Aiosmtpd, "PLAIN", "LOGIN")

    def test_certificate_that_nobody_signed(self):
        """No password is sent to a server that nobody vouches for, unless the agency wants so."""
        self.trusts_server = False
        server = self.start_server(Aiosmtpd)
        for security, reason, warning in (
                ("", BROKEN, "certificate"), ("required", BROKEN, "certificate"),
                ("none", NO_LOGIN, "offers no login")):
            with self.subTest(security=security):
                self.assert_outcome(server, "Failed: ", reason, security=security, warning=warning)
                self.assertEqual(server.login_attempts(sessions=len(CLIENTS)), 0)
                self.assertEqual(server.messages, [])
        self.check_delivery(Aiosmtpd, "PLAIN", security="unverified")


@unittest.skipUnless(CAN_RUN_POSTFIX, "the master of Postfix runs as root only")
class PostfixServer(MailServerTest):
    def test_delivery(self):
        self.check_deliveries(
            Postfix, ("PLAIN",), ("LOGIN", "localhost", "required"), ("CRAM-MD5", "localhost"),
            ("SCRAM-SHA-256", "127.0.0.1", "required"))

    def test_wrong_password(self):
        self.check_wrong_password(Postfix, "PLAIN", "SCRAM-SHA-256")
