"""Fails unless two folders hold messages of the same senders, recipients, subjects and contents.

Usage: compare_messages.py FOLDER FOLDER
"""

import email
import email.policy
import sys
from pathlib import Path


def message(path: Path) -> tuple:
    parsed = email.message_from_bytes(path.read_bytes(), policy=email.policy.default)
    parts = [(part.get_content_type(), part.get_content())
             for part in parsed.walk() if not part.is_multipart()]
    return parsed["To"], parsed["From"], parsed["Subject"], parts


def messages(folder: str) -> list:
    return sorted(message(path) for path in Path(folder).iterdir())


first, second = messages(sys.argv[1]), messages(sys.argv[2])
if first != second:
    differing = sum(one != other for one, other in zip(first, second))
    sys.exit(f"{len(first)} and {len(second)} messages, {differing} of them different")
