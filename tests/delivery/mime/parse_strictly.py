#!/usr/bin/python3
"""Reads every NAME.eml of a folder with a parser that forgives nothing, and holds what it finds
against NAME.json: {"subject", "name", "address", "plain", "html" or null, "pictures"}. Prints every
difference; the exit status says whether there was one."""

import email
import email.policy
import json
import pathlib
import re
import sys

POLICY = email.policy.strict + email.policy.SMTPUTF8
WANTED = {
    "From": r"news@agency\.example",
    "Date": r"Mon, 16 Nov 2026 15:07:41 -0330",
    "Message-ID": r"<[0-9a-f]{32}@agency\.example>",
    "MIME-Version": r"1\.0",
    "Auto-Submitted": "auto-generated",
    "Precedence": "bulk",
}


def lines(text):
    return text.replace("\r\n", "\n").rstrip("\n")


def differences(path):
    content = path.read_bytes()
    wanted = json.loads(path.with_suffix(".json").read_text(encoding="utf-8"))
    if re.search(rb"\r(?!\n)|(?<!\r)\n|\0", content):
        yield "a raw NUL or a lone CR or LF"
    if max(map(len, content.split(b"\r\n"))) > 998:
        yield "a line over 998 bytes"
    head = content.split(b"\r\n\r\n")[0]
    if max(map(len, head.split(b"\r\n"))) > 78:
        yield "a header line over 78 characters"
    message = email.message_from_bytes(content, policy=POLICY)
    for part in message.walk():
        for name, value in part.items():
            if value.defects:
                yield f"{name}: {value.defects}"
        part.get_content() if not part.is_multipart() else None
        if part.defects:
            yield f"{part.get_content_type()}: {part.defects}"
    for name, pattern in WANTED.items():
        if len(message.get_all(name, [])) != 1 or not re.fullmatch(pattern, message[name]):
            yield f"{name}: {message.get_all(name)}"
    if [name for name in message if name not in WANTED] != ["To", "Subject"] + [
            name for name in message if name.startswith(("List-", "Content-"))]:
        yield f"fields: {message.keys()}"
    mailbox = message["To"].addresses
    found = {
        "subject": message["Subject"],
        "name": mailbox[0].display_name,
        "address": mailbox[0].addr_spec,
        "plain": lines(message.get_body(("plain",)).get_content()),
        "html": None,
        "pictures": [],
    }
    if len(mailbox) != 1:
        yield f"{len(mailbox)} recipients"
    if wanted["html"] is not None:
        if message.get_content_type() != "multipart/alternative":
            yield message.get_content_type()
        first, second = message.iter_parts()
        if first.get_content_type() != "text/plain":
            yield "the plain rendering is not the first"
        found["html"] = lines(message.get_body(("html",)).get_content())
        if second.get_content_type() == "multipart/related":
            found["pictures"] = [
                [part["Content-ID"], part.get_content_type(), part.get_content().hex()]
                for part in list(second.iter_parts())[1:]]
    for name, value in found.items():
        expected = wanted[name]
        if isinstance(expected, str):
            expected = lines(expected)
        if name == "name":
            # This parser leaves a blank between two encoded words of a phrase.
            value, expected = value.replace(" ", ""), expected.replace(" ", "")
        if value != expected:
            yield f"{name}: {value!r:.500} instead of {expected!r:.500}"


def main():
    failures = 0
    paths = sorted(pathlib.Path(sys.argv[1]).glob("*.eml"))
    for path in paths:
        try:
            found = list(differences(path))
        except Exception as error:  # pylint: disable=broad-except  # a strict parser raises
            found = [repr(error)]
        for difference in found:
            failures += 1
            print(f"{path.name}: {difference}")
    print(f"{len(paths)} messages")
    sys.exit(1 if failures or not paths else 0)


if __name__ == "__main__":
    main()
