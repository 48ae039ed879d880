#!/usr/bin/python3
"""A real SMTP server for tests, which takes mail over TLS and from one user only.

  aiosmtpd_server.py --certificate FILE --mailbox FOLDER --user NAME --password TEXT
                     --mechanism PLAIN|LOGIN

It listens on a free port of 127.0.0.1, prints the port once it accepts connections, and runs until
it is terminated. Each message is written to FOLDER as 0001.eml, 0002.eml, ... in the order of
arrival, beside 0001.json, its envelope: "from", "to" (a list), "tls", "mechanism" and "user" (who
authenticated). Each attempt to log in adds one line to the file "logins" there: the mechanism, a
blank, and "accepted" or "refused".
"""

import argparse
import asyncio
import json
import logging
import os
import ssl
from pathlib import Path

from aiosmtpd.smtp import SMTP, AuthResult


class Mailbox:
    """Knows the user and files the messages."""

    def __init__(self, folder, user, password):
        self.folder = folder
        self.user = user
        self.password = password
        self.message_count = 0

    def authenticate(self, server, session, envelope, mechanism, login):
        accepted = (login.login, login.password) == (self.user, self.password)
        with (self.folder / "logins").open("a") as logins:
            logins.write(f"{mechanism} {'accepted' if accepted else 'refused'}\n")
        return AuthResult(success=accepted, handled=False, auth_data=(mechanism, login.login))

    async def handle_DATA(self, server, session, envelope):
        mechanism, user = session.auth_data
        self.message_count += 1
        message = self.folder / f"{self.message_count:04}.eml"
        message.write_bytes(envelope.content)
        message.with_suffix(".json").write_text(json.dumps({
            "from": envelope.mail_from, "to": envelope.rcpt_tos, "tls": session.ssl is not None,
            "mechanism": mechanism, "user": user.decode()}))
        return "250 filed"


async def serve(options):
    # A client that goes away in the handshake is what some tests want.
    logging.getLogger("mail.log").setLevel(logging.CRITICAL)
    tls = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
    tls.load_cert_chain(options.certificate)
    options.mailbox.mkdir()
    mailbox = Mailbox(options.mailbox, os.fsencode(options.user), os.fsencode(options.password))
    server = await asyncio.get_running_loop().create_server(
        lambda: SMTP(
            mailbox, hostname="localhost", enable_SMTPUTF8=True, tls_context=tls,
            require_starttls=True, auth_required=True, authenticator=mailbox.authenticate,
            auth_exclude_mechanism={"PLAIN", "LOGIN"} - {options.mechanism}),
        "127.0.0.1", 0)
    print(server.sockets[0].getsockname()[1], flush=True)
    await server.serve_forever()


parser = argparse.ArgumentParser()
parser.add_argument("--certificate", required=True)
parser.add_argument("--mailbox", type=Path, required=True)
parser.add_argument("--user", required=True)
parser.add_argument("--password", required=True)
parser.add_argument("--mechanism", choices=("PLAIN", "LOGIN"), required=True)
asyncio.run(serve(parser.parse_args()))
