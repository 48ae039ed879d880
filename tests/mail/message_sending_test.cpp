#include "mail/message_sending.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/fake_components.h"
#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

using testing::ElementsAre;

class MessageSending : public testing::Test {
 protected:
  void AddRow(Value email, Value send_email) {
    FakeRecordset::Row row{{L"Email", std::move(email)}, {L"SendEmail", std::move(send_email)}};
    for (const wchar_t* column : {L"ProfileNumber", L"Prefix", L"FirstName", L"LastName",
                                  L"Attention", L"Phone", L"Fax", L"BirthDate", L"AnniversaryDate",
                                  L"TravelDate", L"ReturnDate", L"FirstDate", L"LastDate"}) {
      row[column] = std::monostate{};
    }
    row[L"FullName"] = L"Ann \u0141";
    rows_.rows.push_back(std::move(row));
  }
  // The addresses that got a message, in order.
  std::vector<std::wstring> SendAll() {
    std::vector<std::wstring> sent;
    std::wstring last_address;
    for (; !rows_.EndOfFile(); rows_.MoveNext()) {
      if (auto outcome = SendRow(EnglishRegional(), ansi_, rows_, templates_, mail_, last_address))
        sent.push_back(outcome->address);
    }
    return sent;
  }

  Latin1CodePage ansi_;
  FakeRecordset rows_;
  FakeMailComponent mail_;
  MessageTemplates templates_{PrepareMergeTemplate(ansi_, L"To [Full Name]"),
                              PrepareMergeTemplate(ansi_, L"[Email Address]"),
                              PrepareMergeTemplate(ansi_, L"plain [Email Address]")};
};

TEST_F(MessageSending, OneMessagePerMarkedAddress) {
  AddRow(L"ann@example.org", std::int64_t{0});
  AddRow(L"Ann@example.org", std::monostate{});
  AddRow(L"ANN@example.org", true);
  AddRow(L"ann@example.org", true);
  AddRow(std::monostate{}, true);
  AddRow(L"nobody", std::int64_t{1});
  AddRow(L"ann@EXAMPLE.org", std::int64_t{1});
  AddRow(L" ann@example.org", std::int64_t{-1});
  AddRow(L"bob@example.org", L"True");
  EXPECT_THAT(SendAll(), ElementsAre(L"ANN@example.org", L" ann@example.org", L"bob@example.org"));
}

TEST_F(MessageSending, TheMessageGoesToTheRowAlone) {
  AddRow(L"Ann@example.org", true);
  SendAll();
  EXPECT_THAT(mail_.calls, ElementsAre(L"reset 1", L"to Ann \u0141 <Ann@example.org> 1", L"send"));
  EXPECT_EQ(mail_.subject, L"To Ann ?");
  EXPECT_EQ(mail_.body, L"Ann@example.org");
  EXPECT_EQ(mail_.alternative, L"plain Ann@example.org");
}

TEST_F(MessageSending, ResultCodesAreSixteenBitsWide) {
  AddRow(L"ann@example.org", true);
  std::wstring last_address;
  mail_.result = -32768;
  EXPECT_EQ(SendRow(EnglishRegional(), ansi_, rows_, templates_, mail_, last_address)->result_code,
            -32768);
  last_address.clear();
  mail_.result = 32768;
  EXPECT_THROW(SendRow(EnglishRegional(), ansi_, rows_, templates_, mail_, last_address),
               RuntimeError);
}

TEST_F(MessageSending, EveryColumnMustBeThere) {
  AddRow(L"not marked", false);
  rows_.rows[0].erase(L"LastDate");
  EXPECT_TRUE(SendAll().empty());
  rows_.current = 0;
  rows_.rows[0][L"SendEmail"] = true;
  rows_.rows[0][L"Email"] = L"a@b";
  EXPECT_THROW(SendAll(), RuntimeError);
}

}  // namespace
}  // namespace pxscheduler
