#include "platform/sqlite/sql_token.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace pxscheduler {
namespace {

using enum SqlTokenKind;

TEST(SqlTokenTest, TakesStatementsApart) {
  const struct {
    std::string sql;
    std::vector<SqlToken> tokens;
  } cases[] = {
      {"", {}},
      {" \t\r\n\xC2\xA0 -- all", {}},
      {"a.[b]]c]+N'it''s'",
       {{kName, "a"}, {kSymbol, "."}, {kQuotedName, "b]c"}, {kSymbol, "+"}, {kString, "it's"}}},
      {R"("a""b"'-- [x] /*')", {{kQuotedName, "a\"b"}, {kString, "-- [x] /*"}}},
      {"a/* 'x /* nested */ ] */b--'\nc", {{kName, "a"}, {kName, "b"}, {kName, "c"}}},
      {"1.5e-3.2E+x",
       {{kNumber, "1.5e-3"}, {kNumber, ".2"}, {kName, "E"}, {kSymbol, "+"}, {kName, "x"}}},
      {"a!<1!>2", {{kName, "a"}, {kSymbol, ">="}, {kNumber, "1"}, {kSymbol, "<="}, {kNumber, "2"}}},
      {"3!=4<>0x1F",
       {{kNumber, "3"}, {kSymbol, "!="}, {kNumber, "4"}, {kSymbol, "<>"}, {kNumber, "0x1F"}}},
      {"a||b", {{kName, "a"}, {kSymbol, "||"}, {kName, "b"}}},
      {"n=N@x", {{kName, "n"}, {kSymbol, "="}, {kName, "N@x"}}},
      {"Größe\xC2\xA0#t", {{kName, "Größe"}, {kName, "#t"}}},
  };
  for (const auto& [sql, expected] : cases) {
    std::string unclosed;
    std::vector<SqlToken> tokens = ReadSqlTokens(sql, unclosed);
    ASSERT_FALSE(tokens.empty());
    EXPECT_EQ(tokens.back(), SqlToken{});
    tokens.pop_back();
    EXPECT_EQ(tokens, expected) << sql;
    EXPECT_EQ(unclosed, "") << sql;
  }
}

TEST(SqlTokenTest, SaysWhatIsNeverClosed) {
  for (const std::string sql : {"'", "'a''", "[a]]", "\"", "N'"}) {
    std::string unclosed;
    EXPECT_EQ(ReadSqlTokens("x " + sql, unclosed).size(), 3U) << sql;
    EXPECT_EQ(unclosed, sql == "N'" ? "'" : sql.substr(0, 1)) << sql;
  }
  std::string unclosed;
  EXPECT_EQ(ReadSqlTokens("x /* y", unclosed).size(), 2U);
}

}  // namespace
}  // namespace pxscheduler
