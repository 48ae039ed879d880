#include <gtest/gtest.h>

#include "platform/letter_case.h"
#include "platform/linux/icu_code_page.h"
#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

TEST(CodePage, WritesWhatItHasAndAQuestionMarkForTheRest) {
  const struct {
    const wchar_t* page;
    const wchar_t* text;
    const char* bytes;
    const wchar_t* back;
  } cases[] = {
      {L"1252", L"Zo\u00EB \u20AC \u0160", "Zo\xEB \x80 \x8A", L"Zo\u00EB \u20AC \u0160"},
      // No likeness is looked for: full-width letters, a Polish letter, a prime, a picture.
      {L"1252", L"\uFF21\u0142\u2032\U0001F382|", "????|", L"????|"},
      {L"1252", L"\u0081\u009D", "\x81\x9D", L"\u0081\u009D"},
      {L"1250", L"\u0141\u00F3g\u017A \u20AC \u00E3", "\xA3\xF3g\x9F \x80 ?",
       L"\u0141\u00F3g\u017A \u20AC ?"},
      {L"932", L"\u65E5\u672C A\\~ \uFF71 \u20AC", "\x93\xFA\x96\x7B A\\~ \xB1 ?",
       L"\u65E5\u672C A\\~ \uFF71 ?"},
      // A character that may be left out when shown is no exception.
      {L"932", L"a\u200B\u00ADb", "a??b", L"a??b"},
      {L"936", L"\u4E2D\u6587", "\xD6\xD0\xCE\xC4", L"\u4E2D\u6587"},
      {L"54936", L"\U0001F382", "\x94\x39\xBC\x38", L"\U0001F382"},
      {L"65001", L"\u0142\U0001F382", "\xC5\x82\xF0\x9F\x8E\x82", L"\u0142\U0001F382"},
      {L"65001", L"a\xD800z", "a\xEF\xBF\xBDz", L"a\uFFFDz"},
  };
  for (const auto& c : cases) {
    const IcuCodePages pages(c.page);
    EXPECT_EQ(pages.Ansi().ToBytes(c.text), c.bytes) << c.page;
    EXPECT_EQ(pages.Ansi().FromBytes(c.bytes), c.back) << c.page;
    EXPECT_EQ(pages.Ansi().RoundTrip(c.text), c.back) << c.page;
  }
}

// Over texts of every length and every character, the short way gives what the long way gives.
TEST(CodePage, RoundTripsAsItConverts) {
  for (const char* name : {"1250", "1252", "874", "932", "936", "949", "950", "65001", "iso-8859-7",
                           "koi8-r", "utf-16le", "iso-2022-jp", "ibm-037"}) {
    const IcuCodePages pages(L"1252");
    const std::unique_ptr<CodePage> page = pages.Find(name);
    ASSERT_NE(page, nullptr) << name;
    std::wstring text;
    for (wchar_t c = 0; c < 0x2'0000; c += c < 0x3'00 ? 1 : 7) text += c;
    for (std::size_t begin = 0; begin < text.size(); begin += 61) {
      const std::wstring part = L"plain ASCII text of some length " + text.substr(begin, 61);
      const std::wstring once = page->RoundTrip(part);
      ASSERT_EQ(once, page->FromBytes(page->ToBytes(part))) << name << ' ' << begin;
      ASSERT_EQ(once, page->RoundTrip(once)) << name;
    }
    EXPECT_EQ(page->RoundTrip(std::wstring(1, wchar_t{0x7FFFFFFF})).size(), 1U) << name;
  }
}

// One code page is known by heart; ICU finds its own under another name.
TEST(CodePage, KnowsTheUsualPageAsIcuDoes) {
  const IcuCodePages pages(L"1252");
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  EXPECT_EQ(pages.Ansi().FromBytes(bytes), pages.Find("ibm-5348")->FromBytes(bytes));
  EXPECT_EQ(pages.Ansi().ToBytes(pages.Ansi().FromBytes(bytes)), bytes);
}

TEST(CodePage, ReadsUndefinedBytes) {
  const IcuCodePages pages(L"1252");
  EXPECT_EQ(pages.Find("iso-8859-7")->FromBytes("a\xFFz"), L"a\uFFFDz");
  EXPECT_EQ(pages.Find("cp932")->FromBytes("a\xFFz"), L"a\uFFFDz");
  EXPECT_EQ(pages.Find("cp932")->FromBytes("\x93\xFA\x93"), L"\u65E5\uFFFD");
  std::string long_text(10'000, 'x');
  long_text[4095] = '\x93';
  long_text[4096] = '\xFA';
  EXPECT_EQ(pages.Find("932")->FromBytes(long_text).find(L'\u65E5'), 4095U);
}

TEST(CodePages, FindsByNameAndNumber) {
  const IcuCodePages pages(L"1252");
  for (const char* name : {"ISO-8859-2", "utf-8", "UTF8", "windows-1250", "CP1250", "1250", "cp437",
                           "10000", "shift_jis", "us-ascii", "GBK", "big5"})
    EXPECT_NE(pages.Find(name), nullptr) << name;
  for (const char* name : {"", "no-such-page", "99999", "ibm-1047,swaplfnl", "1252 ", "\xFF"})
    EXPECT_EQ(pages.Find(name), nullptr) << name;
  EXPECT_THROW(IcuCodePages(L"12520"), RuntimeError);
}

TEST(LetterCase, KeepsTheLength) {
  EXPECT_EQ(UpperCase(L"stra\u00DFe \u00E9\u0131 \U00010428"), L"STRA\u00DFE \u00C9I \U00010400");
  EXPECT_EQ(LowerCase(L"A\u00C9\u0130\u03A3"), L"a\u00E9i\u03C3");
}

}  // namespace
}  // namespace pxscheduler
