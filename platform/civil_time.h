#pragma once

#include <chrono>
#include <compare>
#include <cstdint>

namespace pxscheduler {

// A day of the Gregorian calendar and a time of that day, in no particular time zone.
struct DateTime {
  std::chrono::sys_days date;
  std::chrono::seconds time_of_day{0};  // 0 (midnight) to 86,399

  friend auto operator<=>(const DateTime&, const DateTime&) = default;
};

// The same day of the month `months` months later (earlier when negative), or the last day of that
// month where it is shorter: 31 January 2026 and 1 give 28 February 2026.
// Raises InvalidProcedureCall (5) outside the years 100 to 9999, which is what dates can hold.
std::chrono::sys_days AddMonths(std::chrono::sys_days date, std::int64_t months);

// Raises InvalidProcedureCall (5) outside the years 100 to 9999.
std::chrono::sys_days AddDays(std::chrono::sys_days date, std::int64_t days);

}  // namespace pxscheduler
