#include <gtest/gtest.h>

#include "data/odbc/column.h"
#include "data/odbc/wide_text.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

TEST(WideTextTest, ConvertsEveryLengthOfCharacter) {
  const std::wstring text = L"Az\u00EB\u20AC\uFFFF\U0001F600\U0010FFFF";
  std::vector<SQLWCHAR> units = {'A', 'z', 0xEB, 0x20AC, 0xFFFF, 0xD83D, 0xDE00, 0xDBFF, 0xDFFF};
  EXPECT_EQ(FromDriverText(units), text);
  std::string utf8 = "left over";
  ToUtf8(units, utf8);
  EXPECT_EQ(utf8, "Az\xC3\xAB\xE2\x82\xAC\xEF\xBF\xBF\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF");
  units.push_back(0);
  EXPECT_EQ(ToDriverText(text), units);
}

TEST(WideTextTest, ReplacesLoneSurrogates) {
  for (const std::vector<SQLWCHAR>& units :
       {std::vector<SQLWCHAR>{'a', 0xD83D}, {'a', 0xDE00}, {'a', 0xD83D}})
    EXPECT_EQ(FromDriverText(units), L"a\uFFFD");
  EXPECT_EQ(FromDriverText(std::vector<SQLWCHAR>{0xD83D, 0xD83D, 0xDE00}), L"\uFFFD\U0001F600");
  EXPECT_EQ(ToDriverText(std::wstring(1, wchar_t{0xD83D})), (std::vector<SQLWCHAR>{0xFFFD, 0}));
}

TEST(ColumnTest, WritesDecimalsPlainly) {
  const struct {
    const char* from_driver;
    const char* plain;
  } cases[] = {{"0", "0"},     {"-.4500", "-0.45"}, {".0000", "0"},
               {"-0.00", "0"}, {"100", "100"},      {"0100.10", "100.1"},
               {"12.", "12"},  {"-7.0000", "-7"},   {"0.0001", "0.0001"}};
  for (const auto& each : cases) EXPECT_EQ(PlainDecimal(each.from_driver), each.plain);
}

}  // namespace
}  // namespace pxscheduler
