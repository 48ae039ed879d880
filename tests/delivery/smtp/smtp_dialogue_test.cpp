#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <new>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "tests/delivery/smtp/mail_fixture.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

// A network of servers that follow a script, whatever they are sent. The script of a connection is
// its replies, separated by "|"; in place of one "timeout" or "exception". At its end the
// connection is lost. A "!" before one of these makes the sending of a message fail in that way.
struct Servers {
  std::vector<std::string> scripts{};  // of the next connections
  std::string commands{};  // first words, "+" between those of one write, "/" at the end
  std::vector<std::string> lines{};
  std::string client_name{};
  std::string client_address = "192.0.2.7";
  std::string server_address = "127.0.0.1";

  std::string Next() {
    std::string step = scripts.front().substr(0, scripts.front().find('|'));
    scripts.front().erase(0, step.size() + 1);
    return step;
  }
  static IoResult ResultOf(const std::string& step) {
    if (step == "exception") throw std::runtime_error(step);
    return step == "timeout" ? IoResult::kTimedOut
           : step.empty()    ? IoResult::kBroken
                             : IoResult::kDone;
  }
};

class ScriptedTransport : public Transport {
 public:
  explicit ScriptedTransport(Servers& servers) : servers_(servers) {}
  ~ScriptedTransport() override {
    servers_.commands += '/';
    servers_.scripts.erase(servers_.scripts.begin());
  }

  IoResult Send(std::string_view bytes, Deadline /*deadline*/) override {
    if (bytes.ends_with("\r\n.\r\n")) {
      servers_.commands += " message";
      const bool fails = servers_.scripts.front().starts_with('!');
      return fails ? Servers::ResultOf(servers_.Next().substr(1)) : IoResult::kDone;
    }
    for (char separator = ' '; !bytes.empty(); separator = '+') {
      const std::string& line = servers_.lines.emplace_back(bytes.substr(0, bytes.find("\r\n")));
      bytes.remove_prefix(line.size() + 2);
      servers_.commands += separator + line.substr(0, line.find(' '));
    }
    return IoResult::kDone;
  }

  IoResult Receive(char* bytes, std::size_t size, std::size_t& received,
                   Deadline /*deadline*/) override {
    if (arrived_.empty()) {
      arrived_ = servers_.Next();
      const IoResult result = Servers::ResultOf(arrived_);
      if (result != IoResult::kDone) return result;
      arrived_ += "\r\n";
    }
    received = arrived_.copy(bytes, size);
    arrived_.erase(0, received);
    return IoResult::kDone;
  }

  std::string LocalAddress() const override { return servers_.client_address; }
  std::string PeerAddress() const override { return servers_.server_address; }

 private:
  Servers& servers_;
  std::string arrived_;
};

class ScriptedNetwork : public Network {
 public:
  explicit ScriptedNetwork(Servers& servers) : servers_(servers) {}

  ConnectResult Connect(const std::string& /*host*/, std::int32_t /*port*/,
                        const ConnectTimeouts& /*timeouts*/, std::unique_ptr<Transport>& transport,
                        std::string& problem) override {
    static const std::map<std::string, ConnectResult> failures = {
        {"unknown name", ConnectResult::kNameUnknown},
        {"name timeout", ConnectResult::kNameTimedOut},
        {"refused", ConnectResult::kRefused},
        {"timeout", ConnectResult::kTimedOut}};
    const std::string& script = servers_.scripts.at(0);
    if (script == "no memory") throw std::bad_alloc();
    const auto failure = failures.find(script);
    if (failure != failures.end()) {
      servers_.scripts.erase(servers_.scripts.begin());
      problem = "as the machine says";
      return failure->second;
    }
    transport = std::make_unique<ScriptedTransport>(servers_);
    return ConnectResult::kConnected;
  }

  IoResult StartTls(std::unique_ptr<Transport>& /*transport*/, const std::string& /*host*/,
                    CertificateCheck check, Deadline /*deadline*/, std::string& problem) override {
    problem = "as TLS says";
    servers_.commands += check == CertificateCheck::kNone ? " tls" : " checked-tls";
    return Servers::ResultOf(servers_.Next());
  }

  std::string HostName() const override { return servers_.client_name; }

 private:
  Servers& servers_;
};

constexpr std::chrono::milliseconds kNoTime{1};

// A server that accepts all, without and with PIPELINING, and how it begins.
const std::string kHello = "220 x|250 x|";
const std::string kPipelining = "220 x|250-x\r\n250 PIPELINING|";
const std::string kAccepts = "250|250|354|250|";

// A run that sends one message for each code, on one connection after another.
struct Dialogue {
  std::vector<std::string> scripts;
  std::vector<std::int32_t> codes;
  std::string commands;
};

void Expect(const std::vector<Dialogue>& dialogues, const std::wstring& password = L"") {
  for (const Dialogue& test : dialogues) {
    SCOPED_TRACE(test.scripts[0].substr(0, 200) + test.commands);
    Servers servers{.scripts = test.scripts};
    {
      TestMail mail(25, kNoTime, std::make_unique<ScriptedNetwork>(servers));
      if (!password.empty()) mail.UsePassword(password);
      EXPECT_EQ(mail.SendToEach({test.codes.size(), L"ann@example.com"}), test.codes);
    }
    EXPECT_EQ(servers.commands, test.commands);
  }
}

TEST(DialogueTest, OpeningAConnection) {
  const std::string delivers = " MAIL RCPT DATA message QUIT/";
  Expect({
      {{"unknown name"}, {17}, ""},
      {{"name timeout"}, {21}, ""},
      {{"refused", kHello + kAccepts}, {9, 0}, " EHLO" + delivers},
      {{"timeout"}, {22}, ""},
      {{"no memory"}, {3}, ""},
      {{"timeout|"}, {27}, "/"},
      {{""}, {16}, "/"},
      {{"exception|"}, {1}, "/"},
      {{"221 x"}, {18}, "/"},
      {{"554 x", kHello + kAccepts}, {18, 0}, "/ EHLO" + delivers},
      {{"220-x\r\n220 x|250|" + kAccepts}, {0}, " EHLO" + delivers},
      {{"220|502|250|" + kAccepts}, {0}, " EHLO HELO" + delivers},
      {{"220|502|502"}, {5}, " EHLO HELO/"},
      {{"220|502|timeout"}, {27}, " EHLO HELO/"},
      {{"220|421 x"}, {5}, " EHLO/"},
      {{"220|354"}, {5}, " EHLO/"},
      {{"220|250-x\r\n250 STARTTLS|454|" + kAccepts}, {0}, " EHLO STARTTLS" + delivers},
      {{"220|250-x\r\n250 STARTTLS|421"}, {16}, " EHLO STARTTLS/"},
      {{"220|250-x\r\n250 STARTTLS|250"}, {16}, " EHLO STARTTLS/"},
      {{"220|250-x\r\n250 STARTTLS|220|"}, {16}, " EHLO STARTTLS tls/"},
      {{"220|250-x\r\n250 STARTTLS|220|timeout"}, {27}, " EHLO STARTTLS tls/"},
      // What arrives before the handshake is not the reply to the EHLO after it.
      {{"220|250-x\r\n250 STARTTLS|220 x\r\n501 injected|done|250|" + kAccepts},
       {0},
       " EHLO STARTTLS tls EHLO" + delivers},
  });
}

TEST(DialogueTest, Authentication) {
  const std::string delivers = " MAIL RCPT DATA message QUIT/";
  const std::string plain = "220|250-x\r\n250 AUTH PLAIN|", login = "220|250-x\r\n250 AUTH LOGIN|";
  const std::string cram = "220|250-x\r\n250 AUTH CRAM-MD5|";
  const std::string scram = "220|250-x\r\n250-AUTH SCRAM-SHA-256\r\n250 AUTH PLAIN|";
  Expect(
      {
          {{plain + "235|" + kAccepts}, {0}, " EHLO AUTH" + delivers},
          {{plain + "250"}, {26}, " EHLO AUTH/"},
          {{plain + "334 |501"}, {26}, " EHLO AUTH */"},
          {{plain + "421"}, {24}, " EHLO AUTH/"},
          {{plain + "504"}, {25}, " EHLO AUTH/"},
          {{plain + "timeout"}, {27}, " EHLO AUTH/"},
          {{login + "334 eA==|334 eA==|235|" + kAccepts},
           {0},
           " EHLO AUTH dXNlcg== c2VjcmV0" + delivers},
          {{login + "334 |334 |235|" + kAccepts}, {0}, " EHLO AUTH dXNlcg== c2VjcmV0" + delivers},
          {{login + "334 |235"}, {26}, " EHLO AUTH dXNlcg==/"},
          {{login + "334 |334 |334 |501"}, {26}, " EHLO AUTH dXNlcg== c2VjcmV0 */"},
          {{login + "334 eA="}, {26}, " EHLO AUTH */"},
          {{login + "334 eA"}, {26}, " EHLO AUTH */"},
          {{login + "334 e==="}, {26}, " EHLO AUTH */"},
          {{login + "334 eA==eA=="}, {26}, " EHLO AUTH */"},
          // The digests of "xyz", "xy" and "x".
          {{cram + "334 eHl6|235|" + kAccepts},
           {0},
           " EHLO AUTH dXNlciBiZDY2MWYyNThhZjBiZjUxOTMzYjZjMjc2OGQxMDc1OQ==" + delivers},
          {{cram + "334 eHk=|235|" + kAccepts},
           {0},
           " EHLO AUTH dXNlciAxMzk5NWIyMzc3NjZlNTA2ZmMzNzZiNWNjYTNlNjRhNg==" + delivers},
          {{cram + "334 eA==|235|" + kAccepts},
           {0},
           " EHLO AUTH dXNlciAwZDg3ODM4NGQ0Y2JmODgxZDNmYmU5YTZhOWM4ZTNiNw==" + delivers},
          {{cram + "235"}, {26}, " EHLO AUTH/"},
          {{cram + "334 |501"}, {26}, " EHLO AUTH */"},
          {{scram + "504|235|" + kAccepts}, {0}, " EHLO AUTH AUTH" + delivers},
          {{scram + "534|235|" + kAccepts}, {0}, " EHLO AUTH AUTH" + delivers},
          {{scram + "235"}, {26}, " EHLO AUTH/"},
          {{scram + "334 cj1ub25jZSxzPWVBPT0saT0x|501"}, {26}, " EHLO AUTH */"},
          // A server that offers TLS and then refuses it gets no password.
          {{"220|250-x\r\n250-STARTTLS\r\n250 AUTH PLAIN|454"}, {16}, " EHLO STARTTLS/"},
          {{"220|250-x\r\n250-STARTTLS\r\n250 AUTH PLAIN|220|done|250|"},
           {25},
           " EHLO STARTTLS checked-tls EHLO/"},
      },
      L"secret");
  Expect({{{kHello}, {24}, ""}}, std::wstring(1, L'\0'));
}

TEST(DialogueTest, RepliesToTheMessage) {
  const std::string longest = "250-" + std::string(4092, 'x') + "\r\n";
  std::string lines;
  std::string bytes;
  for (int i = 0; i < 255; ++i) lines += "250-x\r\n";
  for (int i = 0; i < 16; ++i) bytes += longest;
  std::vector<Dialogue> dialogues;
  const auto add = [&](const std::string& reply, std::int32_t code, const std::string& rest) {
    dialogues.push_back(
        {{kHello + "250|250|354|" + reply}, {code}, " EHLO MAIL RCPT DATA message" + rest});
  };
  for (const std::string& reply : std::vector<std::string>{
           "200", "299 x", "250 x\n", longest + "250", lines + "250 x", bytes + "250 x"})
    add(reply, 0, " QUIT/");
  for (const char* reply : {"400", "499 x", "599 x"}) add(reply, 4, " QUIT/");
  for (const std::string& reply :
       std::vector<std::string>{"199", "300", "354 x", "399", "600", "25", "2500", "2x0", "25: x",
                                "250_x", "x", "250-x\r\n251 x", "250 " + std::string(4093, 'x'),
                                "250-x\r\n" + lines + "250", bytes + longest + "250"})
    add(reply, 18, "/");
  add("timeout", 27, "/");
  add("", 16, "/");
  add("421 x", 4, "/");
  add("exception", 1, " QUIT/");
  // A server may say why it takes no more of the message.
  add("!|552 x", 4, "/");
  add("!|250 x", 16, "/");
  add("!|timeout", 16, "/");
  add("!timeout|552 x", 27, "/");
  Expect(dialogues);
}

TEST(DialogueTest, TheNextMessageAfterARefusal) {
  const std::string next = " MAIL RCPT DATA message QUIT/";
  const std::string pipelined = " MAIL+RCPT+DATA";
  const std::string next_pipelined = " RSET+MAIL+RCPT+DATA message QUIT/";
  const std::string again = kHello + kAccepts;
  Expect({
      {{kHello + "550|250|" + kAccepts}, {7, 0}, " EHLO MAIL RSET" + next},
      {{kHello + "250|550|250|" + kAccepts}, {8, 0}, " EHLO MAIL RCPT RSET" + next},
      {{kHello + "250|250|550|250|" + kAccepts}, {4, 0}, " EHLO MAIL RCPT DATA RSET" + next},
      {{kHello + "250|250|354|550|250|" + kAccepts},
       {4, 0},
       " EHLO MAIL RCPT DATA message RSET" + next},
      {{kPipelining + "250\r\n550\r\n554|250|" + kAccepts},
       {8, 0},
       " EHLO" + pipelined + next_pipelined},
      {{kPipelining + "250\r\n250\r\n451|250|" + kAccepts},
       {4, 0},
       " EHLO" + pipelined + next_pipelined},
      // An empty message ends what the server waits for after 354.
      {{kPipelining + "250|550|354|554|250|" + kAccepts},
       {8, 0},
       " EHLO" + pipelined + " ." + next_pipelined},
      {{kPipelining + "550|503|354|554|250|" + kAccepts},
       {7, 0},
       " EHLO" + pipelined + " ." + next_pipelined},
      {{kPipelining + "250|550|354|421", again}, {8, 0}, " EHLO" + pipelined + " ./ EHLO" + next},
      {{kPipelining + "250|550|354|timeout", again},
       {8, 0},
       " EHLO" + pipelined + " ./ EHLO" + next},
      {{kPipelining + "550|250|354", again}, {7, 0}, " EHLO" + pipelined + "/ EHLO" + next},
      {{kPipelining + "550|421", again}, {7, 0}, " EHLO" + pipelined + "/ EHLO" + next},
      {{kPipelining + "550|timeout", again}, {7, 0}, " EHLO" + pipelined + "/ EHLO" + next},
      // Nothing fits after a reply that does not.
      {{kHello + "354", again}, {18, 0}, " EHLO MAIL/ EHLO" + next},
      {{kHello + "250|354", again}, {18, 0}, " EHLO MAIL RCPT/ EHLO" + next},
      {{kHello + "250|250|250", again}, {18, 0}, " EHLO MAIL RCPT DATA/ EHLO" + next},
      {{kHello + "421", again}, {7, 0}, " EHLO MAIL/ EHLO" + next},
      {{kHello + "250|421", again}, {8, 0}, " EHLO MAIL RCPT/ EHLO" + next},
      {{kHello + "timeout", again}, {27, 0}, " EHLO MAIL/ EHLO" + next},
      {{kHello + "", again}, {16, 0}, " EHLO MAIL/ EHLO" + next},
      {{kHello + "250|", again}, {16, 0}, " EHLO MAIL RCPT/ EHLO" + next},
      {{kHello + "250|250|354|421", again}, {4, 0}, " EHLO MAIL RCPT DATA message/ EHLO" + next},
      {{kHello + "exception", again}, {1, 0}, " EHLO MAIL QUIT/ EHLO" + next},
  });
}

// A limit of messages per connection and an idle time-out show themselves where the next message
// begins; it goes out once more, on a new connection.
TEST(DialogueTest, OneMoreTry) {
  const std::string sent = " MAIL RCPT DATA message", once = " EHLO" + sent;
  const std::string first = kHello + kAccepts;
  Expect({
      {{first + kAccepts}, {0, 0}, once + sent + " QUIT/"},
      {{first, first}, {0, 0}, once + " MAIL/" + once + " QUIT/"},
      {{first + "421", first}, {0, 0}, once + " MAIL/" + once + " QUIT/"},
      {{first + "451", first}, {0, 0}, once + " MAIL/" + once + " QUIT/"},
      {{first + "timeout"}, {0, 27}, once + " MAIL/"},
      {{first + "354"}, {0, 18}, once + " MAIL/"},
      {{first + "250|", first}, {0, 0}, once + " MAIL RCPT/" + once + " QUIT/"},
      {{first + "250|421", first}, {0, 0}, once + " MAIL RCPT/" + once + " QUIT/"},
      {{first + "250|250|421", first}, {0, 0}, once + " MAIL RCPT DATA/" + once + " QUIT/"},
      {{first + "250|250|354|"}, {0, 16}, once + sent + "/"},
      {{kPipelining + kAccepts + "250|421", kHello + kAccepts},
       {0, 0},
       " EHLO MAIL+RCPT+DATA message MAIL+RCPT+DATA/" + once + " QUIT/"},
      {{kPipelining + kAccepts + "250|550|421"},
       {0, 8},
       " EHLO MAIL+RCPT+DATA message MAIL+RCPT+DATA/"},
      {{first + "250|550"}, {0, 8}, once + " MAIL RCPT QUIT/"},
      {{first, "refused"}, {0, 9}, once + " MAIL/"},
      {{first, kHello}, {0, 16}, once + " MAIL/ EHLO MAIL/"},
      {{first, kHello + "550"}, {0, 7}, once + " MAIL/ EHLO MAIL QUIT/"},
      {{kHello + "250|550|", first}, {8, 0}, " EHLO MAIL RCPT RSET/" + once + " QUIT/"},
      {{kHello + "250|550|502", first}, {8, 0}, " EHLO MAIL RCPT RSET/" + once + " QUIT/"},
      {{kHello + "250|550|timeout"}, {8, 27}, " EHLO MAIL RCPT RSET/"},
  });
}

// What fails three times in a row before MAIL is accepted is not tried again.
TEST(DialogueTest, FaultsOfTheServer) {
  Expect({
      {{"refused", "timeout|", "554"}, {9, 27, 18, 18, 18}, "//"},
      {{"refused", "refused", kHello + kAccepts, "refused"},
       {9, 9, 0, 9},
       " EHLO MAIL RCPT DATA message MAIL/"},
      {{"refused", "refused", kHello + "250|550|", "refused"},
       {9, 9, 8, 9},
       " EHLO MAIL RCPT RSET/"},
      {{kHello + "timeout", kHello + "timeout", kHello + "timeout"},
       {27, 27, 27, 27},
       " EHLO MAIL/ EHLO MAIL/ EHLO MAIL/"},
      {{kHello + "550|250|550|250|550|250|550"},
       {7, 7, 7, 7},
       " EHLO MAIL RSET MAIL RSET MAIL RSET MAIL QUIT/"},
  });
}

TEST(DialogueTest, PasswordsAndWhereTheyGo) {
  const std::string delivers = " MAIL RCPT DATA message QUIT/";
  const std::string tls = "220|250-x\r\n250 STARTTLS|220|done|";
  const std::string all = "250-x\r\n250 AUTH SCRAM-SHA-256 CRAM-MD5 PLAIN LOGIN|";
  const auto password_in_clear = [](const std::string& address, const wchar_t* security) {
    Servers servers{.scripts = {"220|250-x\r\n250 AUTH PLAIN|235|" + kAccepts},
                    .server_address = address};
    TestMail mail(25, kNoTime, std::make_unique<ScriptedNetwork>(servers));
    mail.UsePassword(L"secret");
    mail.Component().SetSecurity(security);
    const std::int32_t code = mail.SendTo(L"ann@example.com");
    return std::pair(code, mail.Warnings().size());
  };
  for (const char* address : {"192.0.2.1", "11.0.0.1", "172.32.0.1", "172.15.0.1", "192.169.0.1",
                              "2001:db8::1", "fec0::1", "::ffff:192.0.2.1", ""})
    EXPECT_EQ(password_in_clear(address, L""), std::pair(25, std::size_t{1})) << address;
  for (const char* address : {"10.1.2.3", "172.16.0.1", "172.31.9.9", "192.168.7.7", "169.254.1.1",
                              "fd00::1", "fe80::1%eth0", "::ffff:10.0.0.1"})
    EXPECT_EQ(password_in_clear(address, L""), std::pair(0, std::size_t{1})) << address;
  for (const char* address : {"127.0.0.1", "127.9.9.9", "::1", "::ffff:127.0.0.1"})
    EXPECT_EQ(password_in_clear(address, L""), std::pair(0, std::size_t{0})) << address;
  EXPECT_EQ(password_in_clear("192.0.2.1", L"none"), std::pair(0, std::size_t{0}));
  Expect(
      {
          // A refused challenge is not the last word: the password follows once, inside TLS alone.
          {{tls + all + "535|235|" + kAccepts + "|", tls + all + "235|" + kAccepts},
           {0, 0},
           " EHLO STARTTLS checked-tls EHLO AUTH AUTH MAIL RCPT DATA message MAIL/"
           " EHLO STARTTLS checked-tls EHLO AUTH" +
               delivers},
          {{tls + all + "535|535", tls + all + "535"},
           {24, 24},
           " EHLO STARTTLS checked-tls EHLO AUTH AUTH/ EHLO STARTTLS checked-tls EHLO AUTH/"},
          {{tls + all + "421"}, {24}, " EHLO STARTTLS checked-tls EHLO AUTH/"},
          {{"220|" + all + "535"}, {24}, " EHLO AUTH/"},
      },
      L"secret");
}

TEST(DialogueTest, WhatAnOperatorIsTold) {
  const auto told = [](const std::vector<std::string>& scripts,
                       const std::vector<std::wstring>& recipients,
                       const std::wstring& password = L"") {
    Servers servers{.scripts = scripts};
    TestMail mail(25, kNoTime, std::make_unique<ScriptedNetwork>(servers));
    if (!password.empty()) mail.UsePassword(password);
    mail.SendToEach(recipients);
    std::vector<std::string> lines;
    for (const std::wstring& line : mail.Warnings()) lines.push_back(ToUtf8(line));
    return lines;
  };
  const std::string place = " by 127.0.0.1 port 25: ";
  // Each cause once, whatever the server adds to it.
  EXPECT_THAT(
      told({kHello + "250|450 4.2.0 <a@x>: Greylisted, see id 17|250|"
                     "250|450 4.2.0 <b@x>: Greylisted, see id 18|250|250|550 5.1.1 Unknown"},
           {L"a@x", L"b@x", L"c@x"}),
      ElementsAre(
          "Mail to a@x" + place + "RCPT was answered \"450 4.2.0 <a@x>: Greylisted, see id 17\".",
          "Mail to c@x" + place + "RCPT was answered \"550 5.1.1 Unknown\"."));
  EXPECT_THAT(told({"refused", "refused", "refused"}, {L"a@x", L"b@x", L"c@x", L"d@x", L"e@x"}),
              ElementsAre("Mail to a@x" + place + "no connection (as the machine says).",
                          AllOf(HasSubstr("three times in a row"), HasSubstr("from d@x on"))));
  EXPECT_THAT(told({"220|250-x\r\n250 STARTTLS|220|"}, {L"a@x"}),
              ElementsAre(HasSubstr("TLS could not be started: as TLS says")));
  EXPECT_THAT(told({kHello}, {L"a\r\nSent: b@x"}),
              ElementsAre("Mail to a??Sent: b@x" + place + "the address is malformed."));
  EXPECT_THAT(told({"220|250-x\r\n250 AUTH PLAIN|535 no AHVzZXIAc2VjcmV0"}, {L"a@x"}, L"secret"),
              ElementsAre(HasSubstr("AUTH PLAIN was answered \"535 (and words that repeat the")));
}

TEST(DialogueTest, WhatTheClientSays) {
  struct Case {
    std::string extensions;  // lines of the reply to EHLO
    const wchar_t* recipient;
    std::int32_t code;
    std::string lines;  // between EHLO and DATA
    const wchar_t* sender = L"news@agency.example";
  };
  const wchar_t* const ann = L"ann@example.com";
  const wchar_t* const international = L"\u00e4nn@b\u00fccher.example";
  const std::string from = "MAIL FROM:<news@agency.example>", to = "|RCPT TO:<ann@example.com>|";
  const Case cases[] = {
      {"250 HELP", ann, 0, from + to},
      {"250 8BITMIME", ann, 0, from + to},
      {"250 SIZE", ann, 0, from + " SIZE=343" + to},
      {"250 size 0", ann, 0, from + " SIZE=343" + to},
      {"250   Size  343 ", ann, 0, from + " SIZE=343" + to},
      {"250 SIZE 342", ann, 4, ""},
      {"250 HELP", L" ann..smith@example.com ", 0, from + "|RCPT TO:<\"ann..smith\"@example.com>|"},
      {"250 HELP", L"ann@b\u00fccher.example", 0, from + "|RCPT TO:<ann@xn--bcher-kva.example>|"},
      {"250-SMTPUTF8\r\n250 8BITMIME", international, 0,
       from + " BODY=8BITMIME SMTPUTF8|RCPT TO:<\u00e4nn@xn--bcher-kva.example>|"},
      {"250-SMTPUTF8\r\n250 8BITMIME", ann, 0,
       "MAIL FROM:<\u00e4nn@xn--bcher-kva.example> BODY=8BITMIME SMTPUTF8" + to, international},
      {"250-SMTPUTF8\r\n250 8BITMIME", ann, 0, from + to},
      {"250 8BITMIME", international, 8, ""},
      {"250 SMTPUTF8", international, 8, ""},
      {"250 HELP", ann, 7, "", international},
  };
  for (const Case& test : cases) {
    // Behind the name of the server, which is no extension.
    Servers servers{.scripts = {"220|250-SIZE 1\r\n" + test.extensions + "|" + kAccepts}};
    {
      TestMail mail(25, kNoTime, std::make_unique<ScriptedNetwork>(servers));
      mail.Component().SetSenderAddress(test.sender);
      EXPECT_EQ(mail.SendTo(test.recipient), test.code);
    }
    std::string lines;
    for (const std::string& line : servers.lines)
      if (!line.starts_with("EHLO") && line != "DATA" && line != "QUIT") lines += line + "|";
    EXPECT_EQ(lines, test.lines) << test.extensions;
  }
}

TEST(DialogueTest, NamesOfTheClient) {
  const std::string literal = "[192.0.2.7]";
  for (const auto& [name, address, said] :
       std::vector<std::tuple<std::string, std::string, std::string>>{
           {"client.example.com", "192.0.2.7", "client.example.com"},
           {"host.7a", "192.0.2.7", "host.7a"},
           {"", "2001:db8::7", "[IPv6:2001:db8::7]"},
           {"client", "192.0.2.7", literal},
           {"host.70", "192.0.2.7", literal},
           {"my host.example.com", "192.0.2.7", literal}}) {
    Servers servers{.scripts = {kHello + kAccepts}, .client_name = name, .client_address = address};
    TestMail mail(25, kNoTime, std::make_unique<ScriptedNetwork>(servers));
    EXPECT_EQ(mail.SendTo(L"ann@example.com"), 0);
    EXPECT_EQ(servers.lines[0], "EHLO " + said);
  }
}

}  // namespace
}  // namespace pxscheduler
