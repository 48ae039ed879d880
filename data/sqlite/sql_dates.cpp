#include "data/sqlite/sql_dates.h"

#include <array>
#include <cstdio>
#include <utility>

#include "data/sqlite/sql_token.h"

namespace pxscheduler {
namespace {

using std::chrono::days;
using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr std::array<std::string_view, 12> kMonths = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};
constexpr std::array<std::string_view, 7> kWeekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                       "Thursday", "Friday", "Saturday"};
constexpr std::size_t kShortName = 3;  // letters of a month's abbreviation

sys_days DayOf(SqlMoment moment) { return std::chrono::floor<days>(moment); }

std::int64_t YearOf(SqlMoment moment) {
  return static_cast<int>(year_month_day{DayOf(moment)}.year());
}

std::int64_t MonthNumber(SqlMoment moment) {  // from January of year 0
  const year_month_day date{DayOf(moment)};
  return std::int64_t{static_cast<int>(date.year())} * 12 + static_cast<unsigned>(date.month()) - 1;
}

std::int64_t WeekNumber(sys_days date) {  // 4 January 1970 was a Sunday
  return std::chrono::floor<std::chrono::duration<std::int64_t, std::ratio<604800>>>(
             date.time_since_epoch() - days{3})
      .count();
}

template <typename Unit>
std::int64_t CountOf(SqlMoment moment) {
  return std::chrono::floor<std::chrono::duration<std::int64_t, typename Unit::period>>(
             moment.time_since_epoch())
      .count();
}

bool IsInRange(SqlMoment moment) {
  const std::int64_t year = YearOf(moment);
  return year >= 1 && year <= 9999;
}

std::optional<SqlMoment> AddMonthsTo(SqlMoment moment, std::int64_t count) {
  if (count < -120000 || count > 120000) return std::nullopt;
  const std::int64_t month = MonthNumber(moment) + count;
  if (month < 12 || month >= 120000) return std::nullopt;
  const std::chrono::year_month target = std::chrono::year{static_cast<int>(month / 12)} /
                                         std::chrono::month{static_cast<unsigned>(month % 12 + 1)};
  const year_month_day date{DayOf(moment)};
  const auto last = target / std::chrono::last;
  const sys_days day = date.day() < last.day() ? sys_days{target / date.day()} : sys_days{last};
  return day + (moment - DayOf(moment));
}

std::optional<SqlMoment> AddUnits(SqlMoment moment, std::int64_t count, milliseconds unit) {
  constexpr std::int64_t kMostMilliseconds = 10000LL * 366 * 86400 * 1000;
  if (count > kMostMilliseconds / unit.count() || count < -kMostMilliseconds / unit.count())
    return std::nullopt;
  const SqlMoment result = moment + unit * count;
  return IsInRange(result) ? std::optional{result} : std::nullopt;
}

template <typename... Arguments>
std::string Print(const char* format, Arguments... arguments) {
  std::array<char, 64> buffer{};
  const int length = std::snprintf(buffer.data(), buffer.size(), format, arguments...);
  return {buffer.data(), static_cast<std::size_t>(length)};
}

}  // namespace

std::optional<DatePart> DatePartNamed(std::string_view name) {
  static constexpr std::array<std::pair<std::string_view, DatePart>, 31> kNames = {{
      {"YEAR", DatePart::kYear},       {"YY", DatePart::kYear},
      {"YYYY", DatePart::kYear},       {"QUARTER", DatePart::kQuarter},
      {"QQ", DatePart::kQuarter},      {"Q", DatePart::kQuarter},
      {"MONTH", DatePart::kMonth},     {"MM", DatePart::kMonth},
      {"M", DatePart::kMonth},         {"DAYOFYEAR", DatePart::kDayOfYear},
      {"DY", DatePart::kDayOfYear},    {"Y", DatePart::kDayOfYear},
      {"DAY", DatePart::kDay},         {"DD", DatePart::kDay},
      {"D", DatePart::kDay},           {"WEEK", DatePart::kWeek},
      {"WK", DatePart::kWeek},         {"WW", DatePart::kWeek},
      {"WEEKDAY", DatePart::kWeekday}, {"DW", DatePart::kWeekday},
      {"W", DatePart::kWeekday},       {"HOUR", DatePart::kHour},
      {"HH", DatePart::kHour},         {"MINUTE", DatePart::kMinute},
      {"MI", DatePart::kMinute},       {"N", DatePart::kMinute},
      {"SECOND", DatePart::kSecond},   {"SS", DatePart::kSecond},
      {"S", DatePart::kSecond},        {"MILLISECOND", DatePart::kMillisecond},
      {"MS", DatePart::kMillisecond},
  }};
  const std::string upper = UpperAscii(name);
  for (const auto& [known, part] : kNames)
    if (known == upper) return part;
  return std::nullopt;
}

std::int64_t DateDifference(DatePart part, SqlMoment from, SqlMoment to) {
  switch (part) {
    case DatePart::kYear:
      return YearOf(to) - YearOf(from);
    case DatePart::kQuarter:
      return MonthNumber(to) / 3 - MonthNumber(from) / 3;
    case DatePart::kMonth:
      return MonthNumber(to) - MonthNumber(from);
    case DatePart::kDayOfYear:
    case DatePart::kDay:
    case DatePart::kWeekday:
      return (DayOf(to) - DayOf(from)).count();
    case DatePart::kWeek:
      return WeekNumber(DayOf(to)) - WeekNumber(DayOf(from));
    case DatePart::kHour:
      return CountOf<hours>(to) - CountOf<hours>(from);
    case DatePart::kMinute:
      return CountOf<minutes>(to) - CountOf<minutes>(from);
    case DatePart::kSecond:
      return CountOf<seconds>(to) - CountOf<seconds>(from);
    case DatePart::kMillisecond:
      break;
  }
  return (to - from).count();
}

std::optional<SqlMoment> DateAdd(DatePart part, std::int64_t count, SqlMoment moment) {
  switch (part) {
    case DatePart::kYear:
      return count < -10000 || count > 10000 ? std::nullopt : AddMonthsTo(moment, count * 12);
    case DatePart::kQuarter:
      return count < -40000 || count > 40000 ? std::nullopt : AddMonthsTo(moment, count * 3);
    case DatePart::kMonth:
      return AddMonthsTo(moment, count);
    case DatePart::kDayOfYear:
    case DatePart::kDay:
    case DatePart::kWeekday:
      return AddUnits(moment, count, days{1});
    case DatePart::kWeek:
      return AddUnits(moment, count, days{7});
    case DatePart::kHour:
      return AddUnits(moment, count, hours{1});
    case DatePart::kMinute:
      return AddUnits(moment, count, minutes{1});
    case DatePart::kSecond:
      return AddUnits(moment, count, seconds{1});
    case DatePart::kMillisecond:
      break;
  }
  return AddUnits(moment, count, milliseconds{1});
}

std::int64_t DatePartOf(DatePart part, SqlMoment moment) {
  const sys_days day = DayOf(moment);
  const year_month_day date{day};
  const std::chrono::hh_mm_ss time{moment - day};
  const sys_days new_year{date.year() / 1 / 1};
  switch (part) {
    case DatePart::kYear:
      return static_cast<int>(date.year());
    case DatePart::kQuarter:
      return (static_cast<unsigned>(date.month()) + 2) / 3;
    case DatePart::kMonth:
      return static_cast<unsigned>(date.month());
    case DatePart::kDayOfYear:
      return (day - new_year).count() + 1;
    case DatePart::kDay:
      return static_cast<unsigned>(date.day());
    case DatePart::kWeek:
      return WeekNumber(day) - WeekNumber(new_year) + 1;
    case DatePart::kWeekday:
      return std::chrono::weekday{day}.c_encoding() + 1;
    case DatePart::kHour:
      return time.hours().count();
    case DatePart::kMinute:
      return time.minutes().count();
    case DatePart::kSecond:
      return time.seconds().count();
    case DatePart::kMillisecond:
      break;
  }
  return time.subseconds().count();
}

SqlMoment RoundedToDateTime(SqlMoment moment) {
  static constexpr std::array<int, 10> kMoved = {0, -1, 1, 0, -1, 2, 1, 0, -1, 1};
  const auto last_digit = static_cast<std::size_t>(DatePartOf(DatePart::kMillisecond, moment) % 10);
  return moment + milliseconds{kMoved[last_digit]};
}

std::string_view EnglishMonth(unsigned month) { return kMonths.at(month - 1); }
std::string_view EnglishWeekday(unsigned weekday) { return kWeekdays.at(weekday - 1); }

std::string WriteSqlMoment(SqlMoment moment) {
  const auto thousandths = DatePartOf(DatePart::kMillisecond, moment);
  const auto style = WriteSqlDateInStyle(moment, thousandths == 0 ? 120 : 121);
  return style.value_or("");
}

std::string WriteSqlDay(SqlMoment moment) { return WriteSqlMoment(moment).substr(0, 10); }

std::optional<std::string> WriteSqlDateInStyle(SqlMoment moment, std::int64_t style) {
  const auto part = [moment](DatePart which) {
    return static_cast<int>(DatePartOf(which, moment));
  };
  const int month = part(DatePart::kMonth);
  const int day = part(DatePart::kDay);
  const int hour = part(DatePart::kHour);
  const int minute = part(DatePart::kMinute);
  const int second = part(DatePart::kSecond);
  const int thousandths = part(DatePart::kMillisecond);
  const std::string month_text{EnglishMonth(static_cast<unsigned>(month)).substr(0, kShortName)};
  const char* const month_name = month_text.c_str();
  // Below 100 the year has two digits, apart from the styles that have no short form.
  const bool is_short = style > 0 && style < 13 && style != 8;
  const int year = part(DatePart::kYear) % (is_short ? 100 : 10000);
  const int width = is_short ? 2 : 4;
  switch (style) {
    case 0:
    case 100:
      return Print("%s %2d %04d %2d:%02d%s", month_name, day, year, (hour + 11) % 12 + 1, minute,
                   hour < 12 ? "AM" : "PM");
    case 1:
    case 101:
      return Print("%02d/%02d/%0*d", month, day, width, year);
    case 2:
    case 102:
      return Print("%0*d.%02d.%02d", width, year, month, day);
    case 3:
    case 103:
      return Print("%02d/%02d/%0*d", day, month, width, year);
    case 4:
    case 104:
      return Print("%02d.%02d.%0*d", day, month, width, year);
    case 5:
    case 105:
      return Print("%02d-%02d-%0*d", day, month, width, year);
    case 6:
    case 106:
      return Print("%02d %s %0*d", day, month_name, width, year);
    case 7:
    case 107:
      return Print("%s %02d, %0*d", month_name, day, width, year);
    case 8:
    case 108:
      return Print("%02d:%02d:%02d", hour, minute, second);
    case 10:
    case 110:
      return Print("%02d-%02d-%0*d", month, day, width, year);
    case 11:
    case 111:
      return Print("%0*d/%02d/%02d", width, year, month, day);
    case 12:
    case 112:
      return Print("%0*d%02d%02d", width, year, month, day);
    case 114:
      return Print("%02d:%02d:%02d:%03d", hour, minute, second, thousandths);
    case 20:
    case 120:
      return Print("%04d-%02d-%02d %02d:%02d:%02d", year, month, day, hour, minute, second);
    case 21:
    case 25:
    case 121:
      return Print("%04d-%02d-%02d %02d:%02d:%02d.%03d", year, month, day, hour, minute, second,
                   thousandths);
    case 126:
      return Print(
          thousandths == 0 ? "%04d-%02d-%02dT%02d:%02d:%02d" : "%04d-%02d-%02dT%02d:%02d:%02d.%03d",
          year, month, day, hour, minute, second, thousandths);
    default:
      return std::nullopt;
  }
}

}  // namespace pxscheduler
