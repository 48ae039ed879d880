#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace pxscheduler {

// A date and time as SQL Server's datetime holds it, in no particular time zone.
using SqlMoment = std::chrono::sys_time<std::chrono::milliseconds>;

enum class DatePart {
  kYear,
  kQuarter,
  kMonth,
  kDayOfYear,
  kDay,
  kWeek,
  kWeekday,
  kHour,
  kMinute,
  kSecond,
  kMillisecond
};

// The part that a name or an abbreviation of it stands for ("yy", "yyyy", "year"), without case.
std::optional<DatePart> DatePartNamed(std::string_view name);

// How many boundaries of the part lie between the two, negative when `to` comes first: the years
// from 31 December to 1 January are 1. Weeks begin on Sunday.
std::int64_t DateDifference(DatePart part, SqlMoment from, SqlMoment to);

// Later by `count` parts, earlier when negative; a month without the day gives its last day.
// Nothing outside the years 1 to 9999.
std::optional<SqlMoment> DateAdd(DatePart part, std::int64_t count, SqlMoment moment);

// The part's number: months, quarters and days from 1, the week of 1 January is 1, Sunday is 1.
std::int64_t DatePartOf(DatePart part, SqlMoment moment);

// To a datetime's 1/300 s: the last digit of the milliseconds becomes 0, 3 or 7.
SqlMoment RoundedToDateTime(SqlMoment moment);

// "2026-11-16 15:07:41", with ".250" where there are milliseconds: the form that sorts as its date.
std::string WriteSqlMoment(SqlMoment moment);
std::string WriteSqlDay(SqlMoment moment);          // "2026-11-16"
std::string_view EnglishMonth(unsigned month);      // 1-based
std::string_view EnglishWeekday(unsigned weekday);  // from 1, Sunday

// The form of a style number of CONVERT (0, 1 to 8, 10 to 12, 20, 21, 25, 100 to 112, 114, 120, 121
// and 126). Nothing for other numbers.
std::optional<std::string> WriteSqlDateInStyle(SqlMoment moment, std::int64_t style);

}  // namespace pxscheduler
