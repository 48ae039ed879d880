#include "platform/windows/windows_regional.h"

#include <windows.h>

#include <array>
#include <cstddef>

namespace pxscheduler {
namespace {

// One piece of the user's locale, "" where it has none.
std::wstring LocaleText(LCTYPE type) {
  const int size = ::GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, type, nullptr, 0);
  if (size <= 0) return L"";
  std::wstring text(static_cast<std::size_t>(size), L'\0');
  const int written = ::GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, type, text.data(), size);
  text.resize(written > 0 ? static_cast<std::size_t>(written) - 1 : 0);
  return text;
}

// The name of a month as it stands beside a day, which some languages inflect.
std::wstring MonthOfDate(std::size_t index) {
  SYSTEMTIME day{};
  day.wYear = 2000;
  day.wMonth = static_cast<WORD>(index + 1);
  day.wDay = 1;
  std::array<wchar_t, 100> text{};
  const int size = ::GetDateFormatEx(LOCALE_NAME_USER_DEFAULT, 0, &day, L"d MMMM", text.data(),
                                     static_cast<int>(text.size()), nullptr);
  const std::wstring written(text.data(), size > 0 ? static_cast<std::size_t>(size) - 1 : 0);
  return written.starts_with(L"1 ") ? written.substr(2) : written;
}

CalendarNames WindowsCalendarNames() {
  CalendarNames names;
  for (std::size_t i = 0; i < names.months.size(); ++i) {
    const auto offset = static_cast<LCTYPE>(i);
    names.months[i] = LocaleText(LOCALE_SMONTHNAME1 + offset);
    names.short_months[i] = LocaleText(LOCALE_SABBREVMONTHNAME1 + offset);
    names.months_of_dates[i] = MonthOfDate(i);
  }
  // The system counts from Monday.
  for (std::size_t i = 0; i < names.weekdays.size(); ++i) {
    const auto offset = static_cast<LCTYPE>((i + 6) % 7);
    names.weekdays[i] = LocaleText(LOCALE_SDAYNAME1 + offset);
    names.short_weekdays[i] = LocaleText(LOCALE_SABBREVDAYNAME1 + offset);
  }
  return names;
}

}  // namespace

RegionalSettings WindowsRegionalSettings() {
  RegionalSettings settings;
  settings.short_date = LocaleText(LOCALE_SSHORTDATE);
  settings.long_time = LocaleText(LOCALE_STIMEFORMAT);
  settings.short_time = LocaleText(LOCALE_SSHORTTIME);
  settings.morning = LocaleText(LOCALE_S1159);
  settings.afternoon = LocaleText(LOCALE_S2359);
  settings.names = WindowsCalendarNames;
  return settings;
}

}  // namespace pxscheduler
