#include "platform/regional.h"

#include "text/text.h"

namespace pxscheduler {

std::wstring GeneralDate(const Regional& regional, const DateTime& value) {
  std::wstring text = regional.ShortDate(value.date);
  if (value.time_of_day != std::chrono::seconds{0}) {
    text += L' ';
    text += regional.LongTime(value.time_of_day);
  }
  return text;
}

std::wstring FormatShortDate(const Regional& regional, const std::wstring& text) {
  if (text.empty()) return text;
  const std::optional<DateTime> value = regional.ReadDate(text);
  return value ? regional.ShortDate(value->date) : text;
}

std::wstring FormatMonthDay(const Regional& regional, const std::wstring& text) {
  if (text.empty()) return text;
  const std::optional<DateTime> value = regional.ReadDate(text);
  return value ? MonthDay(regional, value->date) : text;
}

std::wstring MonthDay(const Regional& regional, std::chrono::sys_days date) {
  const std::chrono::year_month_day day{date};
  std::wstring written = regional.MonthName(static_cast<unsigned>(day.month()));
  written += L' ';
  AppendWholeNumber(static_cast<unsigned>(day.day()), written);
  return written;
}

}  // namespace pxscheduler
