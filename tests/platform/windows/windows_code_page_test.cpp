#include "platform/windows/windows_code_page.h"

#include <gtest/gtest.h>

#include "platform/letter_case.h"

namespace pxscheduler {
namespace {

TEST(WindowsCodePage, WritesWhatItHas) {
  const struct {
    const char* page;
    const wchar_t* text;
    const char* bytes;
    const wchar_t* back;
  } cases[] = {
      {"1252", L"Zo\u00EB \u20AC \u0160", "Zo\xEB \x80 \x8A", L"Zo\u00EB \u20AC \u0160"},
      {"1252", L"\u65E5|", "?|", L"?|"},
      {"windows-1250", L"\u0141\u00F3g\u017A", "\xA3\xF3g\x9F", L"\u0141\u00F3g\u017A"},
      {"cp932", L"\u65E5\u672C A\\~ \uFF71", "\x93\xFA\x96\x7B A\\~ \xB1",
       L"\u65E5\u672C A\\~ \uFF71"},
      {"ISO-8859-2", L"\u0142", "\xB3", L"\u0142"},
      {"UTF-8", L"\u0142\U0001F382", "\xC5\x82\xF0\x9F\x8E\x82", L"\u0142\U0001F382"},
      {"utf-8", L"a\xD800z", "a\xEF\xBF\xBDz", L"a\uFFFDz"},
      {"1252", L"", "", L""},
  };
  const WindowsCodePages pages;
  for (const auto& c : cases) {
    const std::unique_ptr<CodePage> page = pages.Find(c.page);
    ASSERT_NE(page, nullptr) << c.page;
    EXPECT_EQ(page->ToBytes(c.text), c.bytes) << c.page;
    EXPECT_EQ(page->FromBytes(c.bytes), c.back) << c.page;
    EXPECT_EQ(page->RoundTrip(c.text), c.back) << c.page;
  }
  for (const char* name : {"", "no-such-page", "windows-", "999999", "1252x"})
    EXPECT_EQ(pages.Find(name), nullptr) << name;
}

// The table of a single-byte page gives what the conversions give, over every unit.
TEST(WindowsCodePage, RoundTripsAsItConverts) {
  const WindowsCodePages pages;
  for (const char* name : {"1250", "1252", "874", "932", "949", "65001"}) {
    const std::unique_ptr<CodePage> page = pages.Find(name);
    ASSERT_NE(page, nullptr) << name;
    std::wstring text;
    for (unsigned unit = 1; unit < 0xFFFE; unit += unit < 0x300 ? 1 : 7)
      if (unit < 0xD800 || unit > 0xDFFF) text += static_cast<wchar_t>(unit);
    const std::wstring once = page->RoundTrip(text);
    EXPECT_EQ(once, page->FromBytes(page->ToBytes(text))) << name;
    EXPECT_EQ(once, page->RoundTrip(once)) << name;
  }
}

TEST(WindowsLetterCase, MapsLetterByLetter) {
  EXPECT_EQ(UpperCase(L"caf\u00E9 stra\u00DFe \u0142"), L"CAF\u00C9 STRA\u00DFE \u0141");
  EXPECT_EQ(LowerCase(L"CAF\u00C9 [X] \u0141"), L"caf\u00E9 [x] \u0142");
  EXPECT_EQ(UpperCase(L"abc_[z]{"), L"ABC_[Z]{");
  EXPECT_EQ(LowerCase(L""), L"");
}

}  // namespace
}  // namespace pxscheduler
