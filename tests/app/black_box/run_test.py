"""Whole runs that end as they should: what the log says and what the mail server got."""

import wine
from machine import (
    CODE_PAGE, COMMAND, DATA_SOURCE, INTERNATIONAL, MAIL, PRODUCT, RUNNING, SHELL_FOLDERS,
    SchedulerTest, log_block)


class Ends(SchedulerTest):
    def test_a_run_is_logged_below_the_one_before(self):
        server = self.start_mail_server()
        self.add_client("Ann@Example.com")
        self.assert_ended_well(self.run_scheduler())
        first_run = log_block(RUNNING, "Sent: Ann@Example.com")
        self.assert_log(*first_run)
        self.assert_ended_well(self.run_scheduler(now="2026-11-17 00:00:00"))
        self.assert_log(
            *first_run, *log_block(RUNNING, "Sent: Ann@Example.com", time="11/17/2026"))
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
        self.assert_no_log()

    @wine.not_under("Wine puts a tab between quotation marks")
    def test_usage(self):
        expected = []
        for command_line in ("", "/QMailing /SHello", "/Q /SHello /Fx.txt", "/qMailing /S /fx.txt",
                             "/QMailing\t/SHello\t/Fx.txt", "/Ujsmith", "Mailing Hello x.txt"):
            self.assert_shows_usage(self.run_scheduler(command_line.replace("\t", "'\t'")))
            expected += log_block("Invalid parameters: " + command_line)
        self.assert_log(*expected)

    def test_queries_that_send_nothing(self):
        server = self.start_mail_server()
        self.add_client("ann@example.com")
        self.save_query(None, "No text")
        self.save_query("", "Empty text")
        self.save_query("SELECT * FROM Clients WHERE 1=0", "No rows")
        expected = []
        for name in ("Unknown", "No text", "Empty text", "No rows", "O'Brien's", "x' OR ''='"):
            self.assert_ended_well(self.run_scheduler(f'"/Q{name} " /SHello /F{{body}}'))
            expected += log_block("Running query: " + name)
        self.assert_log(*expected)
        self.assertEqual(server.messages, [])

    def test_query_of_a_user(self):
        self.start_mail_server()
        self.add_client("unused@example.com")
        for user, login, permissions in (
                (0, "everybody", ""), (1, "admin", ""), (2, "jsmith", "0" * 199 + "1"),
                (3, "trainee", "1" * 199 + "0"), (4, "short", "1" * 199), (5, "idle", "1" * 250)):
            with self.database:
                self.database.execute(
                    "INSERT INTO Users VALUES (?, ?, ?)", (user, login, permissions))
            if login != "idle":
                self.save_query(
                    f"SELECT '{login}@example.com' AS Email, 1 AS SendEmail, ProfileNumber, "
                    "Prefix, FirstName, LastName, FullName, Attention, Phone, Fax, BirthDate, "
                    "AnniversaryDate, TravelDate, ReturnDate, FirstDate, LastDate FROM Clients",
                    user=user)
        expected = []
        for login, found in (("admin", "admin"), ("jsmith", "jsmith"), ("trainee", None),
                             ("short", None), ("idle", None), ("nobody", None),
                             ("x' OR '1'='1", None), ("", "everybody")):
            self.assert_ended_well(self.run_scheduler(COMMAND + f' "/U{login}"'))
            expected += log_block(RUNNING, *([f"Sent: {found}@example.com"] if found else []))
        self.assert_log(*expected)

    def test_switches_in_any_case_and_order(self):
        self.start_mail_server()
        self.add_client("ann@example.com")
        self.save_query("SELECT * FROM Clients", "My A/B test")
        self.assert_ended_well(self.run_scheduler(
            "/f{body}  '/q  My A/B test ' /sHello there /QSecond"))
        self.assert_log(*log_block("Running query: My A/B test", "Sent: ann@example.com"))


class Rows(SchedulerTest):
    def test_three_rows_of_two_addresses(self):
        server = self.start_mail_server()
        for email in ("BOB@EXAMPLE.COM", "ann@example.com", "bob@example.com"):
            self.add_client(email)
        self.assert_ended_well(self.run_scheduler())
        self.assert_sent("Sent: ann@example.com", "Sent: BOB@EXAMPLE.COM")
        self.assertEqual([message.envelope["to"] for message in server.messages],
                         [["ann@example.com"], ["BOB@EXAMPLE.COM"]])

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
        self.assert_ended_well(self.run_scheduler())
        self.assert_sent("Sent: ann@example.com", "Sent: Bob@Example.com", "Sent: Dora@example.com",
                         "Sent: zoe@example.com")
        self.assertEqual([message.parsed["Subject"] for message in server.messages],
                         ["Hello Right", "Hello Right", "Hello Ann", "Hello Ann"])

    def test_macros_of_saved_queries(self):
        self.start_mail_server()
        for name, values in (
                ("birthday.today", {"BirthDate": "1970-11-16"}),
                ("birthday.tomorrow", {"BirthDate": "1970-11-17"}),
                ("birthday.in.a.week", {"BirthDate": "1984-11-23 00:00:00"}),
                ("birthday.later", {"BirthDate": "1984-11-24"}),
                ("no.birthday", {"BirthDate": None}),
                ("silver.this.year", {"AnniversaryDate": "2001-12-24"}),
                ("silver.next.year", {"AnniversaryDate": "2002-02-24"}),
                ("silver.last.month", {"AnniversaryDate": "2001-10-24"}),
                ("travels.today", {"TravelDate": "2026-11-16"}),
                ("travelled", {"TravelDate": "2026-11-15"})):
            self.add_client(name + "@example.com", **values)
        expected = []
        for condition, found in (
                ("MONTH(Birthdate)*100+DAY(Birthdate) IN [NEXT7DAYS]",
                 ["birthday.in.a.week", "birthday.tomorrow"]),
                ("1=1 [25]", ["silver.next.year", "silver.this.year"]),
                ("TravelDate>=[TODAY] AND TravelDate<=[2 WEEKS FROM NOW]", ["travels.today"]),
                ("TravelDate<[TODAY]", ["travelled"])):
            self.save_query("SELECT * FROM Clients WHERE " + condition)
            self.assert_ended_well(self.run_scheduler())
            expected += log_block(RUNNING, *[f"Sent: {name}@example.com" for name in found])
        self.assert_log(*expected)

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
    def message_to_ann(self, command_line=COMMAND, **values):
        server = self.start_mail_server()
        self.add_client("Ann@Example.com", **values)
        self.assert_ended_well(self.run_scheduler(command_line))
        self.assert_sent("Sent: Ann@Example.com")
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
        self.body_file = self.write_file("work/letter.htm", f"<html><body>{body}</body></html>")
        message = self.message_to_ann(
            '/QMailing "/S[Full Name], [Birthday]" /F{body}',
            ProfileNumber=1042, Prefix="Ms.", FirstName="Zo\u00eb", LastName="O'Brien",
            FullName="Zo\u00eb O'Brien", Attention=" ", Phone="555-0100", Fax=None,
            BirthDate="1970-05-12", AnniversaryDate="1999-12-31 00:00:00", TravelDate="2026-12-01",
            ReturnDate="2027-01-05", FirstDate=None, LastDate="some time")
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
        self.assertEqual(message.text.rstrip("\n"), f"{last_name}|{last_name}|Ms.")
        self.assertEqual(message.envelope["to"], ["Ann@Example.com"])
        self.assertIsNone(message.parsed["Bcc"])
        self.assertEqual(len(message.parsed["To"].addresses), 1)
        self.assertIn("Bcc: all@example.com", message.parsed["Subject"])
        self.assertNotIn(b"\0", message.raw)

    def test_lines_that_mean_something_to_a_mail_server(self):
        body = ".\n..two\nRCPT TO:<eve@example.com>\n" + "x" * 3000 + "\n.\nend\n"
        self.body_file = self.write_file("work/letter.txt", body.replace("\n", "\r\n"))
        self.assertEqual(self.message_to_ann().text, body)

    def test_missing_body_file_goes_on(self):
        self.body_file = self.folder / "work" / "missing.htm"
        message = self.message_to_ann()
        self.assertEqual(message.parsed["Subject"], "Hello Ann")
        self.assertEqual(message.text.strip(), "")

    def test_template_of_the_word_processor(self):
        self.body_file = self.write_file(
            "work/letter.QZW", b"\xff" * 30 +
            rb"{\rtf1\ansi\ansicpg1252 Dear {\b [First}{\b  Name]}, \i caf\'e9\i0 !\par Bye.\par}")
        message = self.message_to_ann(FirstName="Zo\u00eb")
        self.assertIn("Dear Zo\u00eb, caf\u00e9!", message.text)
        self.assertIn("Zo\u00eb", message.html)
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
        for text in (password, stored):
            self.registry[MAIL].update(
                EmailAuthenticate="True", EmailUser="office", EmailPassword=text)
            server = self.start_mail_server(
                extensions=["AUTH PLAIN LOGIN"], users={"office": password})
            self.add_client("ann@example.com")
            self.assert_ended_well(self.run_scheduler())
            self.assert_sent("Sent: ann@example.com")
            self.log_file.unlink()
            self.assertEqual(server.messages[0].envelope["user"], "office")


class Settings(SchedulerTest):
    @wine.not_under("Windows has its own setting")
    def test_regional_settings(self):
        self.registry[INTERNATIONAL] = {
            "LocaleName": "de-DE", "sShortDate": "dd.MM.yyyy", "sTimeFormat": "HH:mm:ss"}
        self.body_file = self.write_file("work/letter.txt", "[Birthday] [Travel Date]")
        self.add_client("ann@example.com", BirthDate="1970-03-12", TravelDate="2026-12-01")
        server = self.start_mail_server()
        self.assert_ended_well(self.run_scheduler())
        self.assert_log(*log_block(RUNNING, "Sent: ann@example.com", time="16.11.2026 15:07:41"))
        self.assertEqual(server.messages[0].text.strip(), "M\u00e4rz 12 01.12.2026")

    @wine.not_under("Windows has its own setting")
    def test_code_page(self):
        self.add_client("ann@example.com", FirstName="\u0141ukasz Zo\u00eb")
        self.save_query("SELECT * FROM Clients", "Caf\u00e9")
        for page, encoding, name in (("1252", "cp1252", "?ukasz Zo\u00eb"),
                                     ("65001", "utf-8", "\u0141ukasz Zo\u00eb")):
            self.registry[CODE_PAGE] = {"ACP": page}
            server = self.start_mail_server()
            self.assert_ended_well(self.run_scheduler('/QCaf\u00e9 "/S[First Name]" /F{body}'))
            self.assert_log(*log_block("Running query: Caf\u00e9", "Sent: ann@example.com"),
                            encoding=encoding)
            self.assertEqual(server.messages[0].parsed["Subject"], name)
            self.log_file.unlink()

    def test_data_folder(self):
        for personal, title, folder in (
                (None, "Orbalis CS", "work/Data"),
                (r"%USERPROFILE%\My %NOPE%Files", "Brand X#2", "home/My Files/Brand X"),
                (r"100%\Deep\er", "Orbalis", "work/100%/Deep/er/Orbalis")):
            with self.subTest(personal=personal):
                self.registry[PRODUCT] = {"AppTitle": title}
                self.registry[SHELL_FOLDERS] = {} if personal is None else {"Personal": personal}
                self.assert_ended_well(self.run_scheduler())
                self.log_file = self.folder / folder / "PXScheduler.log"
                self.assert_sent()

    def test_data_source_of_the_user_and_lock_time_out(self):
        self.start_mail_server()
        self.add_client("ann@example.com")
        self.registry[DATA_SOURCE.replace("LOCAL_MACHINE", "CURRENT_USER")] = (
            self.registry[DATA_SOURCE])
        self.registry[DATA_SOURCE] = {"Server": "sqlite:/nowhere", "Database": ""}
        self.registry[PRODUCT] = {"LockTimeout": "-1"}
        self.assert_ended_well(self.run_scheduler())
        self.assert_sent("Sent: ann@example.com")

    @wine.not_under("Windows has a registry")
    def test_registry_file_as_an_export_writes_it(self):
        self.start_mail_server()
        self.add_client("ann@example.com")
        text = self.registry_text().replace("[HKEY_", "; a remark\r\n[HKEY_").replace("DSN", "dsn")
        self.write_file("agency.reg", b"\xff\xfe" + text.encode("utf-16-le"))
        self.registry = None
        self.assert_ended_well(self.run_scheduler())
        self.assert_sent("Sent: ann@example.com")
