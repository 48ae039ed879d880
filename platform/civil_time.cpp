#include "platform/civil_time.h"

#include <cstdint>

#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

using std::chrono::sys_days;

constexpr sys_days kFirstDate = std::chrono::year{100} / 1 / 1;
constexpr sys_days kLastDate = std::chrono::year{9999} / 12 / 31;

}  // namespace

sys_days AddMonths(sys_days date, std::int64_t months) {
  const std::chrono::year_month_day from{date};
  const std::int64_t month_index = std::int64_t{static_cast<int>(from.year())} * 12 +
                                   (static_cast<unsigned>(from.month()) - 1) + months;
  if (month_index / 12 < 100 || month_index / 12 >= 10000) throw InvalidProcedureCall();
  const std::chrono::year_month month{
      std::chrono::year{static_cast<int>(month_index / 12)},
      std::chrono::month{static_cast<unsigned>(month_index % 12 + 1)}};
  const std::chrono::year_month_day same_day = month / from.day();
  return same_day.ok() ? sys_days{same_day} : sys_days{month / std::chrono::last};
}

sys_days AddDays(sys_days date, std::int64_t days) {
  const std::int64_t target = date.time_since_epoch().count() + days;
  if (target < kFirstDate.time_since_epoch().count() ||
      target > kLastDate.time_since_epoch().count())
    throw InvalidProcedureCall();
  return sys_days{std::chrono::days{static_cast<int>(target)}};
}

}  // namespace pxscheduler
