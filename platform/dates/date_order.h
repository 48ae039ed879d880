#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

#include "platform/dates/date_parts.h"
#include "platform/dates/picture.h"

namespace pxscheduler {

// Where the year, the month and the day stand among three numbers, 0 to 2.
struct DateOrder {
  int year = 2;
  int month = 0;
  int day = 1;
};

// The order of a short date picture; month, day, year where the picture does not hold all three.
DateOrder OrderOf(const std::vector<PictureItem>& short_date);

// Whether each date that the picture writes is read again as that date: three numbers between
// single separators, the year with all its digits and, where it is first, with the month behind it.
// Other pictures may do so too.
bool ReadsBack(const std::vector<PictureItem>& short_date);

// Decides which number is which: the locale's order where that gives a date, else another one that
// does. A first number of three or four digits is a year and the month follows it. Two-digit years
// are 1930 to 2029. Two numbers are a month and a day of the current year, or a month and a year
// (its first day) where no such day exists. Nothing outside the years 100 to 9999. `today` is
// called only where the year is missing.
std::optional<std::chrono::sys_days> ResolveDate(
    const DateParts& parts, const DateOrder& order,
    const std::function<std::chrono::sys_days()>& today);

}  // namespace pxscheduler
