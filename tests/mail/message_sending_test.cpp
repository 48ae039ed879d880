#include "mail/message_sending.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "platform/runtime_error.h"
#include "tests/support/fake_components.h"
#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class SendRowsTest : public testing::Test {
 protected:
  void Send() {
    const Latin1CodePage ansi;
    const MessageTemplates templates{PrepareMergeTemplate(ansi, L"To [Full Name]"),
                                     PrepareMergeTemplate(ansi, L"[Email Address]"),
                                     PrepareMergeTemplate(ansi, L"plain")};
    SendRows(system_, EnglishRegional(), ansi, rows_, templates, mail_,
             [this](const std::wstring& address, std::int16_t code) {
               mail_.calls.push_back(L"outcome " + address + L" " + std::to_wstring(code));
               if (address == stop_at_) system_.stop_status = 143;
             });
  }

  FakeSystem system_;
  std::wstring stop_at_;
  FakeRecordset rows_;
  FakeMailComponent mail_;
};

TEST_F(SendRowsTest, AMessageGoesToEachNewAddressAlone) {
  rows_.rows = {{{L"Email", L"ann@x"}, {L"FullName", L"Ann \u0141"}},
                {{L"Email", L"nobody"}},
                {{L"Email", L"ANN@x"}},
                {{L"Email", L"bob@x"}, {L"SendEmail", false}},
                {{L"Email", L" Ann@x"}, {L"FullName", L"[Last Date]"}}};
  mail_.result = -32768;
  Send();
  EXPECT_THAT(mail_.calls,
              ElementsAre(L"compose Ann \u0141 <ann@x> To Ann ? | ann@x | plain",
                          L"compose [Last Date] < Ann@x> To  |  Ann@x | plain", L"send", L"await",
                          L"outcome ann@x -32768", L"send", L"await", L"outcome  Ann@x -32768"));
}

TEST_F(SendRowsTest, AStopLetsTheMessageInFlightEnd) {
  rows_.rows = {{{L"Email", L"ann@x"}}, {{L"Email", L"bob@x"}}, {{L"Email", L"carl@x"}}};
  stop_at_ = L"bob@x";
  Send();
  EXPECT_EQ(std::ranges::count(mail_.calls, L"send"), 2);
  EXPECT_EQ(mail_.calls.back(), L"outcome bob@x 0");
  EXPECT_THAT(system_.warnings, ElementsAre(HasSubstr(L"1 of 3 clients not reached")));
}

TEST_F(SendRowsTest, AResultCodeHasSixteenBits) {
  rows_.rows[0][L"Email"] = L"ann@x";
  for (const std::int32_t code : {32768, -32769}) {
    rows_ = FakeRecordset();
    rows_.rows[0][L"Email"] = L"ann@x";
    mail_.result = code;
    EXPECT_THROW(Send(), RuntimeError);
  }
}

}  // namespace
}  // namespace pxscheduler
