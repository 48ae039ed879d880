#include "data/sqlite/text_collation.h"

#include <gtest/gtest.h>

#include <string>

namespace pxscheduler {
namespace {

TEST(TextCollationTest, ComparesWithoutCaseAndTrailingBlanks) {
  const struct {
    std::string left;
    std::string right;
    int order;
  } cases[] = {
      {"", "", 0},    {"Müller", "MÜLLER  ", 0}, {"a", "B", -1}, {"é", "z", 1},
      {"a", " a", 1}, {"abc", "ab", 1},
  };
  for (const auto& [left, right, order] : cases) {
    const int result = CompareSqlText(left, right);
    EXPECT_EQ((result > 0) - (result < 0), order) << left << " and " << right;
    const int reverse = CompareSqlText(right, left);
    EXPECT_EQ((reverse > 0) - (reverse < 0), -order) << right << " and " << left;
  }
}

TEST(TextCollationTest, MatchesPatterns) {
  // As many places as the platform's wide characters take for it.
  const std::wstring emoji = L"\U0001F600";
  const struct {
    std::wstring text;
    std::wstring pattern;
    wchar_t escape;
    bool matches;
  } cases[] = {
      {L"", L"", 0, true},
      {L"", L"%%", 0, true},
      {L"a", L"", 0, false},
      {L"Élodie", L"é%E", 0, true},
      {L"abcbc", L"a%bc", 0, true},
      {L"abcbd", L"a%bc", 0, false},
      {emoji, std::wstring(emoji.size(), L'_'), 0, true},
      {L"cat", L"[a-c]at", 0, true},
      {L"CAT", L"[^A-C]at", 0, false},
      {L"5%", L"5[%]", 0, true},
      {L"a]", L"a[]]", 0, true},
      {L"a-b", L"a[b-]b", 0, true},
      {L"[a", L"[a", 0, true},
      {L"50%", L"50!%", L'!', true},
      {L"500", L"50!%", L'!', false},
      {L"a_b", L"aX_b", L'x', true},
  };
  for (const auto& [text, pattern, escape, matches] : cases)
    EXPECT_EQ(MatchesSqlPattern(text, pattern, escape), matches) << text << L" " << pattern;
  EXPECT_FALSE(MatchesSqlPattern(std::wstring(5000, L'a'), L"%a%a%a%a%a%a%a%a%ab", 0));
}

}  // namespace
}  // namespace pxscheduler
