#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/delivery/smtp/mail_fixture.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

// However many are composed before the first is sent, each goes to its own recipient.
TEST(DeliveryTest, ComposedMessagesWaitTheirTurn) {
  const ScriptedSmtpServer server("{}");
  TestMail mail(server.Port());
  SmtpMailComponent& component = mail.Component();
  const std::wstring more = L"\n" + std::wstring(12000, L'x');
  std::vector<std::string> expected;
  for (const wchar_t* const letter : {L"once", L"again"}) {
    std::size_t composed = 0;
    for (; component.CanComposeMore(); ++composed) {
      ASSERT_LT(composed, 100U);
      const std::wstring name = letter + std::to_wstring(composed);
      component.ComposeTexts(L"", composed == 2 ? L"nobody" : name + L"@example.com",
                             {.subject = L"", .body = name + more, .alternative_body = L""});
      if (composed != 2) expected.push_back(ToUtf8(name));
    }
    EXPECT_GT(composed, 3U);
    for (std::size_t sent = 0; sent < composed; ++sent) {
      component.Send();
      EXPECT_EQ(component.AwaitResult(), sent == 2 ? 8 : 0);
    }
  }
  const std::vector<std::string> messages = server.Messages();
  ASSERT_EQ(messages.size(), expected.size());
  for (std::size_t i = 0; i < messages.size(); ++i) {
    EXPECT_THAT(messages[i], AllOf(HasSubstr("To: " + expected[i] + "@example.com"),
                                   HasSubstr("\r\n\r\n" + expected[i] + "\r\n")));
    EXPECT_THAT(server.Envelope(i), HasSubstr("\"" + expected[i] + "@example.com\""));
  }
}

TEST(DeliveryTest, LargeMessagesDoNotWaitForOneAnother) {
  TestMail mail(1);
  SmtpMailComponent& component = mail.Component();
  component.SetMessageTemplate(
      {.subject = {}, .body = {{std::wstring(100000, L'x')}, {}}, .alternative_body = {}});
  component.Compose(L"", L"ann@example.com", {});
  EXPECT_FALSE(component.CanComposeMore());
}

TEST(DeliveryTest, NoMessageIsHandedOverTwice) {
  const ScriptedSmtpServer server("{}");
  TestMail mail(server.Port());
  EXPECT_EQ(mail.SendTo(L"ann@example.com"), 0);
  mail.Component().Send();
  EXPECT_EQ(mail.Component().AwaitResult(), 1);
  EXPECT_EQ(mail.SendTo(L"bob@example.com"), 0);
  EXPECT_THAT(server.Messages(), ElementsAre(HasSubstr("ann@"), HasSubstr("bob@")));
}

TEST(DeliveryTest, NothingIsSentWhereSomethingIsMalformedOrMissing) {
  const ScriptedSmtpServer server("{}");
  TestMail mail(server.Port());
  for (const wchar_t* address : {L"", L"a@example.com, b@example.com", L"ann@example.com\r\nDATA"})
    EXPECT_EQ(mail.SendTo(address), 8) << ToUtf8(address);
  for (const wchar_t* sender : {L"", L"agency", L"news@agency.example\r\nRCPT TO:<x@y>"}) {
    mail.Component().SetSenderAddress(sender);
    EXPECT_EQ(mail.SendTo(L"ann@example.com"), 7) << ToUtf8(sender);
  }
  mail.Component().SetServerHost(L"  ");
  EXPECT_EQ(mail.SendTo(L"ann@example.com"), 15);
  EXPECT_THAT(server.Commands(), IsEmpty());
}

TEST(DeliveryTest, ServersThatCannotBeReached) {
  struct Case {
    const wchar_t* host;
    std::int32_t port;
    std::int32_t code;
  };
  constexpr Case kCases[] = {
      {L"127.0.0.1", 1, 9},        {L"localhost", 1, 9},  {L"127.0.0.1", 0, 9},
      {L"127.0.0.1", 65561, 9},    {L"127.0.0.1", -1, 9}, {L"name.invalid", 25, 17},
      {L"no host at all", 25, 17},
  };
  for (const Case& test : kCases) {
    TestMail mail(test.port);
    mail.Component().SetServerHost(test.host);
    const std::int32_t code = mail.SendTo(L"ann@example.com");
    // A machine without any name server may take long to say that it knows no such name.
    EXPECT_TRUE(code == test.code || (test.code == 17 && code == 21)) << ToUtf8(test.host) << code;
  }
}

// Whatever the server was like when the message was composed.
TEST(DeliveryTest, EightBitOnlyWhereTheServerTakesIt) {
  const std::string eight_bit = R"({"extensions": ["PIPELINING", "8BITMIME", "SIZE"], )";
  const std::string seven_bit = R"({"extensions": ["PIPELINING", "SIZE"]})";
  ScriptedSmtpServer server(eight_bit + R"("faults": [{"at": "MAIL", "do": "close", "nth": 2}]})");
  TestMail mail(server.Port());
  SmtpMailComponent& component = mail.Component();
  component.SetMessageTemplate(
      {.subject = {}, .body = {{L".Gr\u00fc\u00dfe\n.\n"}, {}}, .alternative_body = {}});
  for (const wchar_t* address : {L"a@example.com", L"b@example.com", L"c@example.com"})
    component.Compose(L"", address, {});
  const auto send = [&] {
    component.Send();
    EXPECT_EQ(component.AwaitResult(), 0);
  };
  send();
  server.SetScript(seven_bit);
  send();
  component.Compose(L"", L"d@example.com", {});
  EXPECT_TRUE(component.CanComposeMore());
  send();
  send();
  const std::vector<std::string> messages = server.Messages();
  ASSERT_THAT(messages, SizeIs(4));
  EXPECT_THAT(messages[0], AllOf(HasSubstr("\r\nContent-Transfer-Encoding: 8bit\r\n"),
                                 EndsWith("\r\n\r\n.Gr\xC3\xBC\xC3\x9F"
                                          "e\r\n.\r\n")));
  EXPECT_THAT(server.Envelope(0), HasSubstr("BODY=8BITMIME\""));
  for (std::size_t later = 1; later < 4; ++later) {
    EXPECT_THAT(messages[later],
                AllOf(HasSubstr("\r\nContent-Transfer-Encoding: quoted-printable\r\n"),
                      EndsWith("\r\n\r\n.Gr=C3=BC=C3=9Fe\r\n.\r\n")));
    EXPECT_THAT(server.Envelope(later),
                AllOf(HasSubstr("\"connection\": 2"), Not(HasSubstr("BODY="))));
  }
}

TEST(DeliveryTest, AnAddressOfSixteenBytes) {
  const ScriptedSmtpServer server("{}", "::1");
  TestMail mail(server.Port());
  mail.Component().SetServerHost(L"::1");
  EXPECT_EQ(mail.SendTo(L"ann@example.com"), 0);
}

// Three messages, of which one meets the fault. Every send has its outcome in bounded time, the
// others are delivered, and nothing is delivered twice.
TEST(DeliveryTest, Faults) {
  struct Case {
    const char* step;
    const char* action;
    std::int32_t code;
  };
  constexpr Case kCases[] = {
      {"greeting", "close", 16}, {"EHLO", "garbage", 18},    {"AUTH", "reset", 16},
      {"MAIL", "huge", 18},      {"RCPT", "endless", 18},    {"RCPT", "pieces", 0},
      {"DATA", "silence", 27},   {"content", "close", 16},   {"content", "reset", 16},
      {"message", "close", 16},  {"message", "silence", 27},
  };
  ScriptedSmtpServer server("{}");
  for (const Case& test : kCases) {
    for (const char* extensions : {R"(["PIPELINING", "AUTH PLAIN"])", R"(["AUTH PLAIN"])"}) {
      const std::string fault = R"({"at": ")" + std::string(test.step) + R"(", "do": ")" +
                                test.action + R"(", "times": 1})";
      SCOPED_TRACE(fault + extensions);
      server.SetScript(R"({"extensions": )" + std::string(extensions) +
                       R"(, "users": {"user": "secret"}, "faults": [)" + fault + "]}");
      const bool is_silent = test.code == 27;
      TestMail mail(server.Port(), std::chrono::milliseconds(is_silent ? 900 : 20'000));
      mail.UsePassword(L"secret");
      const std::size_t before = server.Messages().size();
      EXPECT_THAT(mail.SendToEach({L"1@example.com", L"2@example.com", L"3@example.com"}),
                  ElementsAre(test.code, 0, 0));
      std::vector<std::string> messages = server.Messages();
      messages.erase(messages.begin(), messages.begin() + static_cast<std::ptrdiff_t>(before));
      const bool is_first_kept = test.code == 0 || std::string_view(test.step) == "message";
      ASSERT_THAT(messages, SizeIs(is_first_kept ? 3 : 2));
      EXPECT_THAT(messages.back(), HasSubstr("3@example.com"));
      EXPECT_THAT(messages[messages.size() - 2], HasSubstr("2@example.com"));
    }
  }
}

TEST(DeliveryTest, BodyFile) {
  TestMail mail(1);
  mail.letters[L"body.htm"] = Letter{L"<html>Hello [First Name]</html>", L"Hello", {}};
  SmtpMailComponent& component = mail.Component();
  EXPECT_EQ(component.LoadBodyFromFile(L"body.htm", MailComponent::kBodyAndAlternative), 0);
  EXPECT_NE(component.LoadBodyFromFile(L"none.htm", MailComponent::kBodyAndAlternative), 0);
  EXPECT_EQ(component.BodyText(), L"<html>Hello [First Name]</html>");
  EXPECT_EQ(component.AlternativeBodyText(), L"Hello");
}

}  // namespace
}  // namespace pxscheduler
