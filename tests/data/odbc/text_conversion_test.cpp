#include <gtest/gtest.h>

#include "data/odbc/column.h"
#include "data/odbc/wide_text.h"
#include "tests/support/raised_by.h"
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
  for (const auto& [from_driver, plain] : cases) EXPECT_EQ(PlainDecimal(from_driver), plain);
}

TEST(ColumnTest, RefusesAValueThatDidNotFit) {
  const std::byte buffer[8] = {};
  const struct {
    CellKind kind;
    SQLLEN longest;
  } cases[] = {{CellKind::kInteger, 8}, {CellKind::kGuid, 7}, {CellKind::kText, 6}};
  for (const auto& [kind, longest] : cases) {
    RowStore rows({L"Name"});
    std::string scratch;
    const auto append = [&, kind = kind](SQLLEN length) {
      AppendCell({.name = L"Name", .kind = kind}, buffer, length, scratch, rows);
    };
    append(longest);
    for (const SQLLEN length : {longest + 1, SQLLEN{SQL_NO_TOTAL}})
      EXPECT_EQ(RaisedBy([&] { append(length); }).description,
                L"A value of the column \"Name\" is longer than the driver said.");
  }
}

}  // namespace
}  // namespace pxscheduler
