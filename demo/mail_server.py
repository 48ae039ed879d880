"""A real SMTP server on a free loopback port that files every message in a Maildir.

Prints the port once it listens, and serves until it is ended. Usage: mail_server.py MAILDIR
"""

import asyncio
import sys

from aiosmtpd.handlers import Mailbox
from aiosmtpd.smtp import SMTP


async def serve(maildir: str) -> None:
    mailbox = Mailbox(maildir)
    server = await asyncio.get_running_loop().create_server(
        lambda: SMTP(mailbox, hostname="localhost", enable_SMTPUTF8=True), "127.0.0.1", 0
    )
    print(server.sockets[0].getsockname()[1], flush=True)
    await server.serve_forever()


asyncio.run(serve(sys.argv[1]))
