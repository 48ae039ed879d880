#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "tests/delivery/smtp/mail_fixture.h"

namespace pxscheduler {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kTimeout{900};
// Over all the steps of three messages, with a margin for a busy machine.
constexpr milliseconds kLongestRun{20'000};

struct FaultCase {
  const char* step;
  const char* action;
  std::int32_t code;  // of the message that meets the fault
};

std::string Script(const FaultCase& fault, bool pipelining) {
  const std::string extensions =
      pipelining ? R"(["PIPELINING", "SIZE 100000", "AUTH PLAIN"])" : R"(["AUTH PLAIN"])";
  return R"({"extensions": )" + extensions +
         R"(, "users": {"user": "secret"}, "faults": [{"at": ")" + fault.step + R"(", "do": ")" +
         fault.action + R"(", "times": 1}]})";
}

std::ptrdiff_t CountOf(const std::vector<std::string>& messages, const std::string& text) {
  return std::count_if(messages.begin(), messages.end(), [&](const std::string& message) {
    return message.find(text) != std::string::npos;
  });
}

// Three messages, of which one meets the fault. Every send has its outcome in bounded time, the
// others are delivered, and nothing is delivered twice.
void MeetFault(ScriptedSmtpServer& server, const FaultCase& fault, bool pipelining) {
  server.SetScript(Script(fault, pipelining));
  TestMail mail(server.Port(), kTimeout);
  mail.Component().SetAuthenticationMode(MailComponent::kAuthenticateLogin);
  mail.Component().SetUserName(L"user");
  mail.Component().SetPassword(L"secret");
  const std::size_t messages_before = server.Messages().size();

  const auto start = steady_clock::now();
  const std::vector<std::int32_t> results =
      mail.SendToEach({L"first@example.com", L"second@example.com", L"third@example.com"});
  EXPECT_LT(steady_clock::now() - start, kLongestRun);

  const bool met_by_second = std::string_view(fault.step) == "between";
  EXPECT_THAT(results, testing::ElementsAre(met_by_second ? 0 : fault.code,
                                            met_by_second ? fault.code : 0, 0));

  std::vector<std::string> messages = server.Messages();
  messages.erase(messages.begin(), messages.begin() + static_cast<std::ptrdiff_t>(messages_before));
  const bool kept_before_fault = std::string_view(fault.step) == "message";
  EXPECT_EQ(CountOf(messages, "first@example.com"), results[0] == 0 || kept_before_fault ? 1 : 0);
  EXPECT_EQ(CountOf(messages, "second@example.com"), results[1] == 0 ? 1 : 0);
  EXPECT_EQ(CountOf(messages, "third@example.com"), 1);
}

std::vector<FaultCase> FaultTable() {
  constexpr const char* kTemporary = "450 later";
  constexpr const char* kPermanent = "550 never";
  constexpr const char* kClosing = "421 closing close";
  std::vector<FaultCase> table = {
      {"greeting", kTemporary, 18}, {"greeting", kPermanent, 18}, {"greeting", kClosing, 18},
      {"EHLO", kTemporary, 0},      {"EHLO", kPermanent, 0},      {"EHLO", kClosing, 5},
      {"AUTH", kTemporary, 24},     {"AUTH", kPermanent, 24},     {"AUTH", kClosing, 24},
      {"MAIL", kTemporary, 7},      {"MAIL", kPermanent, 7},      {"MAIL", kClosing, 7},
      {"RCPT", kTemporary, 8},      {"RCPT", kPermanent, 8},      {"RCPT", kClosing, 8},
      {"DATA", kTemporary, 4},      {"DATA", kPermanent, 4},      {"DATA", kClosing, 4},
      {"message", kTemporary, 4},   {"message", kPermanent, 4},   {"message", kClosing, 4},
      {"between", kTemporary, 0},   {"between", kPermanent, 0},   {"between", kClosing, 0},
      {"DATA", "250 what", 18},     {"MAIL", "354 what", 18},     {"content", "close", 16},
      {"content", "reset", 16},
  };
  // EHLO without an answer that names AUTH cannot authenticate.
  table[3].code = table[4].code = 25;
  for (const char* step :
       {"greeting", "EHLO", "AUTH", "MAIL", "RCPT", "DATA", "message", "between"}) {
    const bool is_between = std::string_view(step) == "between";
    table.push_back({step, "close", is_between ? 0 : 16});
    table.push_back({step, "reset", is_between ? 0 : 16});
    table.push_back({step, "garbage", 18});
    table.push_back({step, "huge", 18});
    table.push_back({step, "endless", 18});
    table.push_back({step, "silence", 27});
    if (!is_between) table.push_back({step, "pieces", 0});
  }
  return table;
}

// The steps that PIPELINING changes.
std::vector<FaultCase> TransactionFaults() {
  std::vector<FaultCase> table = FaultTable();
  std::erase_if(table, [](const FaultCase& fault) {
    const std::string_view step = fault.step;
    return step == "greeting" || step == "EHLO" || step == "AUTH";
  });
  return table;
}

void MeetFaults(const std::vector<FaultCase>& table, bool pipelining) {
  ScriptedSmtpServer server("{}");
  for (const FaultCase& fault : table) {
    SCOPED_TRACE(std::string(fault.step) + ": " + fault.action);
    MeetFault(server, fault, pipelining);
  }
}

TEST(FaultTest, EveryStepWithPipelining) { MeetFaults(FaultTable(), true); }

TEST(FaultTest, EveryCommandOneByOne) { MeetFaults(TransactionFaults(), false); }

}  // namespace
}  // namespace pxscheduler
