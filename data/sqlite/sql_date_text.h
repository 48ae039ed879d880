#pragma once

#include <optional>
#include <string_view>

#include "data/sqlite/sql_dates.h"

namespace pxscheduler {

// In which order the numbers of a date with separators stand, unless the first has four digits.
enum class DateFieldOrder { kMonthDayYear, kDayMonthYear, kYearMonthDay };

enum class DateTextFault {
  kNone,
  kNoDate,
  kOutOfRange,  // a date by its form, but of a month, day or time that there is not
};

struct DateText {
  SqlMoment moment;
  DateTextFault fault = DateTextFault::kNone;
  bool has_long_fraction = false;  // more than three digits, which a datetime does not take
};

// Reads a date as SQL Server reads a text under us_english: "2026-11-16", "20261116", "261116",
// "11/16/2026" (also with "-" or "."), "Nov 16, 2026", "16 November 26", "2026", each with a time
// "15:07", "15:07:41.250", "3:07 PM" or none; a time alone is on 1 January 1900, and so is the
// empty text. A two-digit year is in 1950 to 2049.
DateText ReadDateText(std::string_view text, DateFieldOrder order = DateFieldOrder::kMonthDayYear);

// Reads a date in the form of ISO 8601 in which a column holds it: a day, and a time behind a blank
// or "T", with a fraction of any length, and "Z" or an offset, which does not move it. Nothing for
// other texts.
std::optional<SqlMoment> ReadStoredDate(std::string_view text);

}  // namespace pxscheduler
