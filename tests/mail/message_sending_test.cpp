#include "mail/message_sending.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/runtime_error.h"
#include "tests/support/fake_components.h"
#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

using testing::ElementsAre;

TEST(ComposeRow, AMessageGoesToEachNewAddressAlone) {
  const Latin1CodePage ansi;
  const MessageTemplates templates{PrepareMergeTemplate(ansi, L"To [Full Name]"),
                                   PrepareMergeTemplate(ansi, L"[Email Address]"),
                                   PrepareMergeTemplate(ansi, L"plain [Email Address]")};
  FakeRecordset rows;
  rows.row[L"FullName"] = L"Ann \u0141";
  FakeMailComponent mail;
  std::wstring last_address;
  std::vector<std::wstring> composed;
  for (const wchar_t* address : {L"ann@example.org", L"nobody", L"ANN@example.org", L" Ann@x"}) {
    rows.row[L"Email"] = address;
    composed.push_back(
        ComposeRow(EnglishRegional(), ansi, rows, templates, mail, last_address).value_or(L""));
  }
  EXPECT_THAT(composed, ElementsAre(L"ann@example.org", L"", L"", L" Ann@x"));
  EXPECT_THAT(mail.calls, ElementsAre(L"reset 1", L"to Ann \u0141 <ann@example.org> 1", L"compose",
                                      L"reset 1", L"to Ann \u0141 < Ann@x> 1", L"compose"));
  EXPECT_EQ(mail.subject, L"To Ann ?");
  EXPECT_EQ(mail.body, L" Ann@x");
  EXPECT_EQ(mail.alternative, L"plain  Ann@x");
}

TEST(AwaitResultCode, IsSixteenBitsWide) {
  FakeMailComponent mail;
  mail.result = -32768;
  EXPECT_EQ(AwaitResultCode(mail), -32768);
  mail.result = 32768;
  EXPECT_THROW(AwaitResultCode(mail), RuntimeError);
}

}  // namespace
}  // namespace pxscheduler
