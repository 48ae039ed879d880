"""Whole runs that end as they should: what the log says and what the mail server got."""

import wine
from machine import (
    CODE_PAGE, COMMAND, INTERNATIONAL, MAIL, NOW, PRODUCT, RUNNING, SHELL_FOLDERS, SchedulerTest,
    log_block)


class Ends(SchedulerTest):
    def test_a_run_is_logged_below_the_one_before(self):
        server = self.start_mail_server()
        self.add_client("Ann@Example.com")
        for now in (NOW, "2026-11-17 00:00:00"):
            self.assert_ended_well(self.run_scheduler(now=now))
        self.assert_log(*log_block(RUNNING, "Sent: Ann@Example.com"),
                        *log_block(RUNNING, "Sent: Ann@Example.com", time="11/17/2026"))
        self.assertEqual(len(server.messages), 2)

    def test_without_a_log_all_the_rest_happens(self):
        server = self.start_mail_server()
        self.add_client("ann@example.com")
        for switches in (COMMAND + " /NOLOG", COMMAND + " /nologging",
                         "/QMailing '/Sabout/NoLog' /F{body}"):
            self.assert_ended_well(self.run_scheduler(switches))
        self.assert_shows_usage(self.run_scheduler("/NOLOG"))
        self.assertEqual(len(server.messages), 3)
        self.assertTrue(self.log_file.parent.is_dir())
        self.assertFalse(self.log_file.exists())

    @wine.not_under("Wine puts a tab between quotation marks")
    def test_usage(self):
        for command_line in ("", "/QMailing /SHello", "/Q /SHello /Fx.txt", "/qMailing /S /fx.txt",
                             "/QMailing\t/SHello\t/Fx.txt"):
            self.assert_shows_usage(self.run_scheduler(command_line.replace("\t", "'\t'")))
            self.assert_log(*log_block("Invalid parameters: " + command_line))

    def test_queries_that_send_nothing(self):
        server = self.start_mail_server()
        self.add_client("ann@example.com")
        self.save_query(None, "No text")
        self.save_query("", "Empty text")
        self.save_query("SELECT * FROM Clients WHERE 1=0", "No rows")
        for name in ("Unknown", "No text", "Empty text", "No rows", "O'Brien's", "x' OR ''='"):
            warning = [f'No saved query "{name}"', "everybody"] if name != "No rows" else []
            self.assert_ended_well(self.run_scheduler(f'"/Q{name} " /SHello /F{{body}}'), *warning)
            self.assert_log(*log_block("Running query: " + name))
        self.assertEqual(server.messages, [])

    def test_query_of_a_user(self):
        self.start_mail_server()
        for user, login, permissions in (
                (0, "everybody", ""), (1, "admin", ""), (2, "jsmith", "0" * 199 + "1"),
                (3, "trainee", "1" * 199 + "0"), (4, "short", "1" * 199), (5, "idle", "1" * 250)):
            self.insert("Users", UserID=user, Login=login, Permissions=permissions)
            self.add_client(login + "@example.com")
            if login != "idle":
                self.save_query(
                    f"SELECT * FROM Clients WHERE Email='{login}@example.com'", user=user)
        for login, *found in (("admin", "admin"), ("jsmith", "jsmith"), ("trainee",), ("short",),
                              ("idle",), ("nobody",), ("x' OR '1'='1",), ("", "everybody")):
            self.assert_sends(*[f"Sent: {user}@example.com" for user in found],
                              command_line=COMMAND + f' "/U{login}"',
                              warning=() if found else (f'of the user "{login}"',))


class Rows(SchedulerTest):
    def test_who_gets_a_message_and_in_which_order(self):
        server = self.start_mail_server()
        for email, values in (
                ("zoe@example.com", {}),
                ("Bob@Example.com", {"FirstName": "Right"}),
                ("ANN@EXAMPLE.COM", {"SendEmail": None}),
                ("ann@example.com", {"FirstName": "Right"}),
                ("Ann@Example.com", {"FirstName": "Wrong"}),
                ("bob@EXAMPLE.com", {"FirstName": "Wrong"}),
                ("carl@example.com", {"SendEmail": 0}),
                ("carl at example.com", {}), (None, {}), ("", {}),
                ("Dora@example.com", {"SendEmail": -1})):
            self.add_client(email, **values)
        self.assert_sends("Sent: ann@example.com", "Sent: Bob@Example.com",
                          "Sent: Dora@example.com", "Sent: zoe@example.com")
        self.assertEqual([message.parsed["Subject"] for message in server.messages],
                         ["Hello Right", "Hello Right", "Hello Ann", "Hello Ann"])

    def test_macros_of_saved_queries(self):
        self.start_mail_server()
        for name, values in (
                ("birthday.today", {"BirthDate": "1970-11-16"}),
                ("birthday.tomorrow", {"BirthDate": "1970-11-17"}),
                ("birthday.in.a.week", {"BirthDate": "1984-11-23 00:00:00"}),
                ("birthday.later", {"BirthDate": "1984-11-24"}),
                ("silver.this.year", {"AnniversaryDate": "2001-12-24"}),
                ("silver.next.year", {"AnniversaryDate": "2002-02-24"}),
                ("silver.last.month", {"AnniversaryDate": "2001-10-24"}),
                ("travels.today", {"TravelDate": "2026-11-16"}),
                ("travelled", {"TravelDate": "2026-11-15"})):
            self.add_client(name + "@example.com", **values)
        for condition, *found in (
                ("MONTH(Birthdate)*100+DAY(Birthdate) IN [NEXT7DAYS]",
                 "birthday.in.a.week", "birthday.tomorrow"),
                ("1=1 [25]", "silver.next.year", "silver.this.year"),
                ("TravelDate>=[TODAY] AND TravelDate<=[2 WEEKS FROM NOW]", "travels.today"),
                ("TravelDate<[TODAY]", "travelled")):
            self.save_query("SELECT * FROM Clients WHERE " + condition)
            self.assert_sends(*[f"Sent: {name}@example.com" for name in found])

    @wine.not_under("Wine finds the end of a file first and writes there later, in two steps")
    def test_two_runs_at_once_never_mix_inside_a_line(self):
        server = self.start_mail_server()
        sent = [f"client{number:03}@example.com" for number in range(100)]
        for email in sent:
            self.add_client(email)
        runs = [self.start() for _ in range(2)]
        for run in runs:
            self.assertEqual(run.communicate(timeout=60), ("", ""))
        one_run = log_block(RUNNING, *["Sent: " + email for email in sent])
        self.assertEqual(sorted(self.log_file.read_bytes().split(b"\r\n")),
                         sorted(line.encode() for line in [*one_run, *one_run, ""]))
        self.assertEqual(len(server.messages), 200)


class Messages(SchedulerTest):
    def message_to_ann(self, command_line=COMMAND, warning=(), **values):
        server = self.start_mail_server()
        self.add_client("Ann@Example.com", **values)
        self.assert_sends("Sent: Ann@Example.com", command_line=command_line, warning=warning)
        (message,) = server.messages
        self.assertEqual(message.envelope["from"], "office@sunset.example")
        self.assertEqual(message.envelope["to"], ["Ann@Example.com"])
        self.assertLess(max(map(len, message.raw.split(b"\r\n"))), 999)
        return message

    def test_every_field_is_merged(self):
        tokens = ("Number", "Prefix", "First Name", "Last Name", "Full Name", "Salutation",
                  "Phone Number", "Fax Number", "Email Address", "Birthday", "Anniversary",
                  "Travel Date", "Return Date", "Start Date", "Last Date", "first name")
        body = "".join(f"<p>[{token}]</p>" for token in tokens)
        self.body_file = self.write_file("work/letter.qzw.htm", f"<html><body>{body}</body></html>")
        message = self.message_to_ann(
            '/QMailing "/S[Full Name], [Birthday]" /F{body}',
            ProfileNumber=1042, Prefix="Ms.", FirstName="Zo\u00eb", LastName="O'Brien",
            FullName="Zo\u00eb O'Brien", Attention=" ", Phone="555-0100", Fax=None,
            BirthDate="1970-05-12", AnniversaryDate="1999-12-31 00:00:00",
            TravelDate="2026-12-01 18:00:00", ReturnDate="2027-01-05", FirstDate=None,
            LastDate="some time")
        values = ("1042", "Ms.", "Zo\u00eb", "O'Brien", "Zo\u00eb O'Brien", "Zo\u00eb O'Brien",
                  "555-0100", "", "Ann@Example.com", "May 12", "December 31", "12/1/2026",
                  "1/5/2027", "", "some time", "[first name]")
        self.assertEqual(message.parsed["Subject"], "Zo\u00eb O'Brien, May 12")
        self.assertEqual(message.parsed["From"], "office@sunset.example")
        self.assertEqual(message.parsed["To"].addresses[0].display_name, "Zo\u00eb O'Brien")
        self.assertEqual(message.parsed.get_content_type(), "multipart/alternative")
        self.assertIn("".join(f"<p>{value}</p>" for value in values), message.html)
        self.assertEqual([line for line in message.text.split("\n") if line],
                         [value for value in values if value])

    def test_hostile_values_arrive_whole_and_add_nothing(self):
        last_name = "Long Name " * 500 + '[Prefix]%s"<&>'
        self.body_file = self.write_file("work/letter.txt", "[First Name]|[Last Name]|[Prefix]")
        message = self.message_to_ann(
            '/QMailing "/S[Full Name]" /F{body}', FirstName="[Last Name]", LastName=last_name,
            Prefix="Ms.",
            FullName='Ann\r\nBcc: all@example.com\r\n\r\n"<eve@example.com>, \0Eve')
        self.assertEqual(message.parsed.get_content_type(), "text/plain")
        self.assertEqual(message.text.rstrip("\n"), f"{last_name}|{last_name}|Ms.")
        self.assertIsNone(message.parsed["Bcc"])
        self.assertEqual(len(message.parsed["To"].addresses), 1)
        self.assertIn("Bcc: all@example.com", message.parsed["Subject"])
        self.assertNotIn(b"\0", message.raw)

    def test_missing_body_file_goes_on(self):
        message = self.message_to_ann('/QMailing "/SHello [First Name]" /Fqzw',
                                      warning=["The letter qzw does not exist", "empty message"])
        self.assertEqual(message.parsed["Subject"], "Hello Ann")
        self.assertEqual(message.text.strip(), "")

    def test_template_of_the_word_processor(self):
        self.body_file = self.write_file(
            "work/letter.QZW", b"\xff" * 30 + rb"{\rtf1\ansi\ansicpg1252\paperw12240\margr720 "
            rb"Dear {\b [First}{\b  Name]}, \i caf\'e9\i0 !\par Bye.\par}")
        message = self.message_to_ann(FirstName="Zo\u00eb")
        self.assertIn("Dear Zo\u00eb, caf\u00e9!", message.text)
        self.assertIn("Zo\u00eb", message.html)
        self.assertIn("@page{size:612pt 841.9pt;margin:72pt 36pt 72pt 72pt}", message.html)
        self.assertIn("</html>", message.html.lower())
        self.assertTrue(self.converted_file().exists())

    def test_pictures_of_an_html_template_lie_beside_it(self):
        picture = b"GIF89a of the letter"
        self.write_file("work/logo.gif", picture)
        for name in ("logo.gif", "other.gif"):
            self.write_file("tmp/" + name, b"GIF89a of somebody else")
        self.body_file = self.write_file(
            "work/letter.qzw",
            b"\0" * 30 + b'<html><body><img src="logo.gif"><img src="other.gif"></body></html>')
        server = self.start_mail_server()
        self.add_client("ann@example.com")
        result = self.run_scheduler()
        self.assertEqual(result.returncode, 0)
        self.assertRegex(result.stderr, r"\A[^\n]*letter\.qzw: the picture other\.gif [^\n]*\n\Z")
        (message,) = server.messages
        pictures = [part.get_content() for part in message.parsed.walk()
                    if part.get_content_maintype() == "image"]
        self.assertEqual(pictures, [picture])
        self.assertRegex(message.html, r'<img src="cid:[^"]+"><img src="other\.gif">')

    def test_logging_in(self):
        password = "S3cret \u00fcber;pass"
        stored = self.encipher(password)
        self.assertRegex(stored, "^v1:")
        self.add_client("ann@example.com")
        for text in (password, stored):
            self.registry[MAIL].update(
                EmailAuthenticate="True", EmailUser="office", EmailPassword=text)
            server = self.start_mail_server(
                extensions=["AUTH PLAIN LOGIN"], users={"office": password})
            self.assert_sends("Sent: ann@example.com")
            self.assertEqual(server.messages[0].envelope["user"], "office")


class Settings(SchedulerTest):
    @wine.not_under("Windows has its own settings")
    def test_regional_settings_and_code_page(self):
        self.registry[INTERNATIONAL] = {
            "LocaleName": "de-DE", "sShortDate": "dd.MM.yyyy", "sTimeFormat": "HH:mm:ss"}
        self.registry[CODE_PAGE] = {"ACP": "65001"}
        self.body_file = self.write_file("work/letter.txt", "[Birthday] [Travel Date]")
        self.add_client("ann@example.com", FirstName="\u0141ukasz", BirthDate="1970-03-12",
                        TravelDate="2026-12-01")
        self.save_query("SELECT * FROM Clients", "Caf\u00e9")
        server = self.start_mail_server()
        self.assert_ended_well(self.run_scheduler('/QCaf\u00e9 "/S[First Name]" /F{body}'))
        self.assert_log(*log_block("Running query: Caf\u00e9", "Sent: ann@example.com",
                                   time="16.11.2026 15:07:41"), encoding="utf-8")
        (message,) = server.messages
        self.assertEqual(message.parsed["Subject"], "\u0141ukasz")
        self.assertEqual(message.text.strip(), "M\u00e4rz 12 01.12.2026")

    def test_data_folder(self):
        for personal, title, folder in (
                (None, "Orbalis CS", "work/Data"),
                (r"%USERPROFILE%\My %NOPE%Files", "Brand X#2", "home/My Files/Brand X"),
                (r"100%\Deep\er", "Orbalis", "work/100%/Deep/er/Orbalis")):
            with self.subTest(personal=personal):
                self.registry[PRODUCT] = {"AppTitle": title, "LockTimeout": "-1"}
                self.registry[SHELL_FOLDERS] = {} if personal is None else {"Personal": personal}
                self.log_file = self.folder / folder / "PXScheduler.log"
                self.assert_sends()
