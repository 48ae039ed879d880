#pragma once

#include <array>
#include <chrono>
#include <functional>
#include <string>

namespace pxscheduler {

// The names of one language's calendar.
struct CalendarNames {
  std::array<std::wstring, 12> months;           // January first, as they stand alone
  std::array<std::wstring, 12> months_of_dates;  // as they stand beside a day ("16 listopada")
  std::array<std::wstring, 12> short_months;
  std::array<std::wstring, 7> weekdays;  // Sunday first
  std::array<std::wstring, 7> short_weekdays;
};

// What a user sets of the way that dates and times are written and read. Pictures are the
// platform's: d dd ddd dddd M MM MMM MMMM y yy yyyy in dates, h hh H HH m mm s ss t tt in times,
// 'quoted text', and anything else as it stands.
struct RegionalSettings {
  std::wstring short_date = L"M/d/yyyy";
  std::wstring long_time = L"h:mm:ss tt";
  std::wstring short_time = L"HH:mm";
  std::wstring morning = L"AM";
  std::wstring afternoon = L"PM";
  // Called once at most, when a name is first needed.
  std::function<CalendarNames()> names;
  // The current local date: it completes a text that names no year.
  std::function<std::chrono::sys_days()> today;
};

}  // namespace pxscheduler
