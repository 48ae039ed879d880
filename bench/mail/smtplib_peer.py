#!/usr/bin/python3
"""A program as one would write it with Python's smtplib.

Usage: smtplib_peer.py handmade|email DATABASE TEMPLATE.HTM TEMPLATE.TXT PORT
"""

import email.message
import email.utils
import smtplib
import sqlite3
import sys

TOKENS = ["[Number]", "[Prefix]", "[First Name]", "[Last Name]", "[Full Name]", "[Salutation]",
          "[Phone Number]", "[Fax Number]", "[Email Address]", "[Birthday]", "[Anniversary]",
          "[Travel Date]", "[Return Date]", "[Start Date]", "[Last Date]"]
QUERY = """SELECT ProfileNumber, Prefix, FirstName, LastName, FullName, Attention, Phone, Fax, Email,
  BirthDate, AnniversaryDate, TravelDate, ReturnDate, FirstDate, LastDate FROM Clients ORDER BY Email"""
SENDER = "marketing@agency.example"


def merged(text, values):
    for token, value in zip(TOKENS, values):
        text = text.replace(token, value)
    return text


def lines(text):
    return text.encode().replace(b"\n", b"\r\n")


def handmade(subject, name, address, plain, html):
    return b"".join([
        b"From: ", SENDER.encode(), b'\r\nTo: "', name.encode(), b'" <', address.encode(),
        b">\r\nSubject: ", subject.encode(), b"\r\nDate: ", email.utils.formatdate().encode(),
        b"\r\nMessage-ID: ", email.utils.make_msgid(domain="agency.example").encode(),
        b"\r\nMIME-Version: 1.0\r\nAuto-Submitted: auto-generated\r\nPrecedence: bulk\r\n"
        b'Content-Type: multipart/alternative; boundary="=_b"\r\n'
        b"Content-Transfer-Encoding: 8bit\r\n\r\n"
        b"--=_b\r\nContent-Type: text/plain; charset=utf-8\r\n"
        b"Content-Transfer-Encoding: 8bit\r\n\r\n", lines(plain),
        b"\r\n--=_b\r\nContent-Type: text/html; charset=utf-8\r\n"
        b"Content-Transfer-Encoding: 8bit\r\n\r\n", lines(html), b"\r\n--=_b--\r\n"])


def by_email_package(subject, name, address, plain, html):
    message = email.message.EmailMessage()
    message["From"] = SENDER
    message["To"] = email.utils.formataddr((name, address))
    message["Subject"] = subject
    message["Date"] = email.utils.formatdate()
    message["Message-ID"] = email.utils.make_msgid(domain="agency.example")
    message["Auto-Submitted"] = "auto-generated"
    message["Precedence"] = "bulk"
    message.set_content(plain, cte="8bit")
    message.add_alternative(html, subtype="html", cte="8bit")
    return message.as_bytes()


def main():
    compose = handmade if sys.argv[1] == "handmade" else by_email_package
    with open(sys.argv[3], encoding="utf-8") as file:
        html = file.read()
    with open(sys.argv[4], encoding="utf-8") as file:
        plain = file.read()
    server = smtplib.SMTP("127.0.0.1", int(sys.argv[5]), local_hostname="client.example")
    for row in sqlite3.connect(sys.argv[2]).execute(QUERY):
        values = ["" if value is None else str(value) for value in row]
        message = compose(merged("Happy birthday, [First Name]!", values), values[4], values[8],
                          merged(plain, values), merged(html, values))
        server.sendmail(SENDER, [values[8]], message)
    server.quit()


if __name__ == "__main__":
    main()
