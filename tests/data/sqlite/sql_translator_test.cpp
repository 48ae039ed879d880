#include "data/sqlite/sql_translator.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

namespace pxscheduler {
namespace {

// What statements give is tested where they run: sqlite_session_test.cpp.
TEST(SqlTranslatorTest, ReadsTheLockTimeout) {
  const std::pair<const char*, std::optional<std::int64_t>> cases[] = {
      {"SET LOCK_TIMEOUT 60000", 60000}, {"set lock_timeout -1;", -1}, {"SET NOCOUNT ON", {}}};
  for (const auto& [sql, timeout_ms] : cases) {
    EXPECT_EQ(TranslateSql(sql, {}).lock_timeout_ms, timeout_ms) << sql;
    EXPECT_EQ(TranslateSql(sql, {}).sql, "") << sql;
  }
}

}  // namespace
}  // namespace pxscheduler
