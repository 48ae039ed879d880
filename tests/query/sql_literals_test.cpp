#include "query/sql_literals.h"

#include <gtest/gtest.h>

#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

TEST(FormatSqlDate, ReadsTheLocaleAndWritesOneForm) {
  const struct {
    PictureRegional regional;
    const wchar_t* value;
    const wchar_t* literal;
  } cases[] = {
      {EnglishRegional(), L"11/16/2026", L"'2026-11-16'"},
      {EnglishRegional(), L"  11/16/'2026 ", L"'2026-11-16'"},
      {EnglishRegional(), L"1/2/2026:", L"'2026-01-02'"},
      {EnglishRegional(), L"11/16/2026 3:30 PM", L"'2026-11-16 15:30'"},
      {EnglishRegional(), L"2026-11-16 12:00N", L"'2026-11-16 12:00'"},
      {EnglishRegional(), L"2026-11-16 12:00M", L"'2026-11-16 00:00'"},
      {EnglishRegional(), L"2026-11-16 11:00AM", L"'2026-11-16 11:00'"},
      {GermanRegional(), L"16.11.2026", L"'2026-11-16'"},
      {EnglishRegional(), L"", L"Null"},
      {EnglishRegional(), L" : ", L"Null"},
      {EnglishRegional(), L"Null", L"Null"},
      {EnglishRegional(), L"10:30", L"Null"},
      {EnglishRegional(), L"null", L"'null'"},
  };
  const Latin1CodePage ansi;
  for (const auto& c : cases)
    EXPECT_EQ(FormatSqlDate(c.regional, ansi, c.value), c.literal) << c.value;
}

TEST(StripTrailing, RemovesEveryRepetition) {
  EXPECT_EQ(StripTrailing(L"1117,1118,,", L","), L"1117,1118");
  EXPECT_EQ(StripTrailing(L",,,", L","), L"");
  EXPECT_EQ(StripTrailing(L"abab", L"ab"), L"");
}

}  // namespace
}  // namespace pxscheduler
