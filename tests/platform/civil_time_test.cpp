#include "platform/civil_time.h"

#include <gtest/gtest.h>

#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

using namespace std::chrono_literals;
using std::chrono::sys_days;

TEST(AddMonths, ClampsToTheLastDayOfAShorterMonth) {
  const struct {
    sys_days from;
    int months;
    sys_days expected;
  } cases[] = {
      {2026y / 1 / 31, 1, 2026y / 2 / 28},     {2024y / 1 / 31, 1, 2024y / 2 / 29},
      {2026y / 3 / 31, -1, 2026y / 2 / 28},    {2026y / 12 / 31, 1, 2027y / 1 / 31},
      {2026y / 1 / 1, -1, 2025y / 12 / 1},     {2024y / 2 / 29, 12, 2025y / 2 / 28},
      {2026y / 11 / 16, -23, 2024y / 12 / 16},
  };
  for (const auto& c : cases) EXPECT_EQ(AddMonths(c.from, c.months), c.expected) << c.months;
}

TEST(CivilTime, StaysInsideTheYearsThatDatesCanHold) {
  EXPECT_EQ(AddDays(2026y / 12 / 31, 1), sys_days{2027y / 1 / 1});
  EXPECT_EQ(AddMonths(9999y / 11 / 30, 1), sys_days{9999y / 12 / 30});
  EXPECT_THROW(AddMonths(9999y / 12 / 1, 1), RuntimeError);
  EXPECT_THROW(AddMonths(100y / 1 / 1, -1), RuntimeError);
  EXPECT_THROW(AddDays(9999y / 12 / 31, 1), RuntimeError);
  EXPECT_THROW(AddDays(2026y / 1 / 1, std::int64_t{1} << 40), RuntimeError);
}

}  // namespace
}  // namespace pxscheduler
