#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "platform/civil_time.h"

namespace pxscheduler {

// The user's regional settings: how dates and times are written and read.
class Regional {
 public:
  virtual ~Regional() = default;

  // In the locale's named forms, for instance "11/16/2026", "3:07:41 PM" and "15:07".
  // A time of day is 0 to 86,399 seconds.
  virtual std::wstring ShortDate(std::chrono::sys_days date) const = 0;
  virtual std::wstring LongTime(std::chrono::seconds time_of_day) const = 0;
  virtual std::wstring ShortTime(std::chrono::seconds time_of_day) const = 0;

  // The full name of a month, 1 (January) to 12.
  virtual std::wstring MonthName(unsigned month) const = 0;

  // Reads a date, a time of day or both as the platform converts a text to a date: the locale's
  // order first, another order where that one cannot be, year-month-day always. A time alone is on
  // 30 December 1899. Nothing where the text is not a date.
  virtual std::optional<DateTime> ReadDate(std::wstring_view text) const = 0;

  // Whether ReadDate reads every date that ShortDate writes, of the years 100 to 9999, as that
  // date. False where that is not certain.
  virtual bool ReadsBackShortDates() const = 0;
};

// The general date form: the short date, a blank and the long time; at midnight the date alone.
std::wstring GeneralDate(const Regional& regional, const DateTime& value);

// The text read as a date and written in the named form. "" for "", and a text that is not a date
// comes back unchanged.
std::wstring FormatShortDate(const Regional& regional, const std::wstring& text);
std::wstring FormatMonthDay(const Regional& regional, const std::wstring& text);  // "mmmm d"

std::wstring MonthDay(const Regional& regional, std::chrono::sys_days date);  // "mmmm d"

}  // namespace pxscheduler
