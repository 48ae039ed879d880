#include "platform/dates/picture_regional.h"

#include <utility>

#include "platform/dates/date_parts.h"
#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

// The day that a time of day alone stands on.
constexpr std::chrono::sys_days kDayZero =
    std::chrono::year{1899} / std::chrono::December / std::chrono::day{30};

// What stands between the hours and the minutes.
wchar_t TimeSeparator(const std::vector<PictureItem>& long_time) {
  for (std::size_t i = 1; i < long_time.size(); ++i) {
    const PictureItem& before = long_time[i - 1];
    const bool after_hours = before.letter == L'h' || before.letter == L'H';
    if (after_hours && long_time[i].letter == 0 && long_time[i].text.size() == 1)
      return long_time[i].text[0];
  }
  return L':';
}

}  // namespace

PictureRegional::PictureRegional(RegionalSettings settings)
    : settings_(std::move(settings)),
      short_date_(ParsePicture(settings_.short_date, kDateLetters)),
      long_time_(ParsePicture(settings_.long_time, kTimeLetters)),
      short_time_(ParsePicture(settings_.short_time, kTimeLetters)),
      short_date_needs_names_(NeedsNames(short_date_)),
      reads_back_short_dates_(ReadsBack(short_date_)),
      order_(OrderOf(short_date_)),
      time_separator_(TimeSeparator(long_time_)) {}

const CalendarNames& PictureRegional::Names() const {
  if (!names_) names_ = settings_.names();
  return *names_;
}

const DateWords& PictureRegional::Words() const {
  if (!words_) words_.emplace(Names(), settings_, short_date_, long_time_);
  return *words_;
}

std::wstring PictureRegional::ShortDate(std::chrono::sys_days date) const {
  static const CalendarNames no_names;
  return WriteDate(short_date_, date, short_date_needs_names_ ? Names() : no_names);
}

std::wstring PictureRegional::LongTime(std::chrono::seconds time_of_day) const {
  return WriteTime(long_time_, time_of_day, settings_.morning, settings_.afternoon);
}

std::wstring PictureRegional::ShortTime(std::chrono::seconds time_of_day) const {
  return WriteTime(short_time_, time_of_day, settings_.morning, settings_.afternoon);
}

std::wstring PictureRegional::MonthName(unsigned month) const {
  if (month < 1 || month > 12) throw InvalidProcedureCall();
  return Names().months[month - 1];
}

std::optional<DateTime> PictureRegional::ReadDate(std::wstring_view text) const {
  const std::optional<DateParts> parts =
      ParseDateParts(text, time_separator_, [this]() -> const DateWords& { return Words(); });
  if (!parts) return std::nullopt;
  const bool time_alone = parts->time_of_day && parts->numbers.Count() == 0 && parts->month == 0;
  std::optional<std::chrono::sys_days> date;
  if (!time_alone)
    date = ResolveDate(*parts, order_, settings_.today);
  else if (!parts->weekday)
    date = kDayZero;
  if (!date) return std::nullopt;
  return DateTime{*date, parts->time_of_day.value_or(std::chrono::seconds{0})};
}

}  // namespace pxscheduler
