#include "letters/component/rich_text_component.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "compose/body_template.h"
#include "tests/support/com_fixture.h"
#include "tests/support/fake_components.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

using testing::ElementsAre;

class RichTextComponentTest : public ComFixture {
 protected:
  void Install() { server_.Install(L"Tx4oleLib.TXTextControl"); }
  void Convert() {
    PrepareMessageBody(
        system_, code_pages_.Ansi(), [this] { return NewWindowsTextControl(system_, code_pages_); },
        mail_, L"C:\\News.qzw");
  }

  FakeCodePages code_pages_;
  FakeMailComponent mail_;
};

TEST_F(RichTextComponentTest, ATemplateIsConvertedByTheseCallsInThisOrder) {
  Install();
  wchar_t folder[MAX_PATH + 1] = {};
  ASSERT_NE(::GetTempPathW(MAX_PATH, folder), 0U);
  system_.temporary_folder = folder;
  Convert();
  const std::string saved = ToUtf8(system_.temporary_folder) + "scheduler.htm";
  EXPECT_THAT(
      Calls(),
      ElementsAre("Control site", "Control active on a hidden window",
                  "Control.99(&\"C:\\News.qzw\", short 30, short 3)", "Control.112(0)",
                  "Control.12 = 11906", "Control.112(1)", "Control.112(2)", "Control.112(3)",
                  "Control.23 = 1440", "Control.112(4)", "Control.112(5)", "Control.25 = 720",
                  "Control.12", "Control.112(0) = 11906", "Control.13", "Control.112(1) = 2",
                  "Control.22", "Control.112(2) = 3", "Control.23", "Control.112(3) = 1440",
                  "Control.24", "Control.112(4) = 5", "Control.25", "Control.112(5) = 720",
                  "Control.100(&\"" + saved + "\", short 0, short 4)", "Control closed",
                  "Control no site", "Control released"));
}

TEST_F(RichTextComponentTest, ALoadThatFailsIsRaisedAndLeavesNothingBehind) {
  Install();
  FailNext("Control.99", static_cast<HRESULT>(0x800A7531), L"The file is damaged");
  const RuntimeError error = RaisedBy([&] { Convert(); });
  EXPECT_EQ(error.number, 30001);
  EXPECT_EQ(error.description, L"The file is damaged");
  EXPECT_EQ(Calls().back(), "Control released");
}

TEST_F(RichTextComponentTest, OurOwnControlStandsInWhereItCannotBeUsed) {
  system_.files[L"C:\\News.qzw"] = std::string(30, 'x') + "{\\rtf1 Dear [First Name]}";
  const std::wstring html = system_.temporary_folder + L"scheduler.htm";
  Convert();
  EXPECT_NE(system_.files[html].find("Dear [First Name]"), std::string::npos);
  EXPECT_TRUE(system_.warnings.empty());

  Install();
  FailNext("Tx4oleLib.TXTextControl.CreateInstance", CLASS_E_NOTLICENSED);
  system_.files.erase(html);
  Convert();
  EXPECT_NE(system_.files[html].find("Dear [First Name]"), std::string::npos);
  EXPECT_EQ(system_.warnings.size(), 1U);
  EXPECT_TRUE(Calls().empty());
}

}  // namespace
}  // namespace pxscheduler
