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
    FakeRecordset::Row row = ClientRow(std::move(email), std::move(send_email));
    row[L"FullName"] = L"Ann \u0141";
    rows_.rows.push_back(std::move(row));
  }
  // The addresses that get a message, in order.
  std::vector<std::wstring> ComposeAll() {
    std::vector<std::wstring> composed;
    std::wstring last_address;
    for (; !rows_.EndOfFile(); rows_.MoveNext()) {
      if (auto address =
              ComposeRow(EnglishRegional(), ansi_, rows_, templates_, mail_, last_address))
        composed.push_back(*std::move(address));
    }
    return composed;
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
  EXPECT_THAT(ComposeAll(),
              ElementsAre(L"ANN@example.org", L" ann@example.org", L"bob@example.org"));
}

TEST_F(MessageSending, TheMessageGoesToTheRowAlone) {
  AddRow(L"Ann@example.org", true);
  ComposeAll();
  EXPECT_THAT(mail_.calls,
              ElementsAre(L"reset 1", L"to Ann \u0141 <Ann@example.org> 1", L"compose"));
  EXPECT_EQ(mail_.subject, L"To Ann ?");
  EXPECT_EQ(mail_.body, L"Ann@example.org");
  EXPECT_EQ(mail_.alternative, L"plain Ann@example.org");
}

TEST_F(MessageSending, ResultCodesAreSixteenBitsWide) {
  mail_.result = -32768;
  EXPECT_EQ(AwaitResultCode(mail_), -32768);
  mail_.result = 32768;
  EXPECT_THROW(AwaitResultCode(mail_), RuntimeError);
}

TEST_F(MessageSending, EveryColumnMustBeThere) {
  AddRow(L"not marked", false);
  rows_.rows[0].erase(L"LastDate");
  EXPECT_TRUE(ComposeAll().empty());
  rows_.current = 0;
  rows_.rows[0][L"SendEmail"] = true;
  rows_.rows[0][L"Email"] = L"a@b";
  EXPECT_THROW(ComposeAll(), RuntimeError);
}

}  // namespace
}  // namespace pxscheduler
