#include "config/helper_library.h"

#include <gtest/gtest.h>

#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

// U+0141, which the code page lacks.
constexpr wchar_t kForeign[] = L"\u0141";

TEST(HelperLibrary, StuffReplacesEveryOccurrenceOnce) {
  const Latin1CodePage ansi;
  const struct {
    const wchar_t* text;
    const wchar_t* placeholder;
    const wchar_t* replacement;
    const wchar_t* result;
  } cases[] = {
      {L"a[x]b[x]", L"[x]", L"1", L"a1b1"}, {L"[x]", L"[x]", L"[x][x]", L"[x][x]"},
      {L"aaa", L"aa", L"b", L"ba"},         {L"[X]", L"[x]", L"1", L"[X]"},
      {L"text", L"", L"1", L"text"},        {kForeign, L"none", L"", L"?"},
      {L"[x]", L"[x]", kForeign, L"?"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Stuff(ansi, c.text, c.placeholder, c.replacement), c.result) << c.text;
  EXPECT_EQ(Stuff(ansi, std::wstring_view{L"a\0[x]", 5}, L"[x]", L"b"), std::wstring(L"a\0b", 3));
}

TEST(HelperLibrary, BlankMeansWhiteSpaceOnly) {
  EXPECT_EQ(IsBlank(L""), kTrue);
  EXPECT_EQ(IsBlank(L" \t\r\n"), kTrue);
  EXPECT_EQ(IsBlank(L" x "), kFalse);
  EXPECT_EQ(~IsBlank(L""), 0);
}

TEST(HelperLibrary, ParseAndQuote) {
  const Latin1CodePage ansi;
  EXPECT_EQ(Parse(ansi, L"Brand X#2#3", L"#"), L"Brand X");
  EXPECT_EQ(Parse(ansi, L"whole", L"#"), L"whole");
  EXPECT_EQ(Parse(ansi, L"#", L"#"), L"");
  EXPECT_EQ(Quote(ansi, L"O'Brien"), L"'O''Brien'");
  EXPECT_EQ(Quote(ansi, L""), L"''");
  EXPECT_EQ(Quote(ansi, kForeign), L"'?'");
}

}  // namespace
}  // namespace pxscheduler
