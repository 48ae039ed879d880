#include "data/sqlite/sql_dates.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "data/sqlite/sql_token.h"
#include "text/ascii_case.h"

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

bool IsDateDigit(char character) { return character >= '0' && character <= '9'; }

int FullYear(int year, std::size_t digits) {
  if (digits > 2) return year;
  return year + (year < 50 ? 2000 : 1900);
}

std::optional<sys_days> Day(int year, int month, int day) {
  const year_month_day date{std::chrono::year{year},
                            std::chrono::month{static_cast<unsigned>(month)},
                            std::chrono::day{static_cast<unsigned>(day)}};
  if (!date.ok() || year < 1) return std::nullopt;
  return sys_days{date};
}

// Reads a date text from its start to its end, dropping what it has read.
class DateReader {
 public:
  explicit DateReader(std::string_view text) : rest_{text} {}

  DateText Read(DateFieldOrder order) {
    SkipBlanks();
    DateText result{sys_days{std::chrono::year{1900} / 1 / 1}};
    std::optional<milliseconds> time{0};
    if (!rest_.empty() && !SeesTime()) {
      std::optional<sys_days> date;
      result.fault = DateTextFault::kNoDate;
      if (!ReadDay(order, date)) return result;
      result.fault = date ? DateTextFault::kNone : DateTextFault::kOutOfRange;
      result.moment = date.value_or(sys_days{});
    }
    if (!rest_.empty()) {
      if (rest_[0] == 'T' || rest_[0] == 't')
        rest_.remove_prefix(1);
      else
        SkipBlanks();
    }
    bool is_time = true;
    if (!rest_.empty()) is_time = ReadTime(time, result.has_long_fraction);
    if (!is_time || !rest_.empty())
      result.fault = DateTextFault::kNoDate;
    else if (!time)
      result.fault = DateTextFault::kOutOfRange;
    else
      result.moment += *time;
    return result;
  }

 private:
  void SkipBlanks() {
    while (rest_.starts_with(' ')) rest_.remove_prefix(1);
  }

  bool Take(char character) {
    if (!rest_.starts_with(character)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  // Whether a time stands here: "15:" or "3 PM".
  bool SeesTime() const {
    const std::size_t digits = std::min(rest_.find_first_not_of("0123456789"), rest_.size());
    if (digits == 0 || digits > 2) return false;
    std::string_view behind = rest_.substr(digits);
    while (behind.starts_with(' ')) behind.remove_prefix(1);
    return behind.starts_with(':') || IsHalfOfDay(behind);
  }

  static bool IsHalfOfDay(std::string_view text) {
    const std::string half = UpperAscii(text.substr(0, 2));
    return half == "AM" || half == "PM";
  }

  // A number of at most `most` digits; `digits` is how many it has, 0 where there is none.
  int Number(std::size_t most, std::size_t& digits) {
    int number = 0;
    for (digits = 0; digits < most && !rest_.empty() && IsDateDigit(rest_[0]); ++digits) {
      number = number * 10 + (rest_[0] - '0');
      rest_.remove_prefix(1);
    }
    return number;
  }

  // The month that a word names, 1 to 12; 0 for any other word.
  int Month() {
    std::size_t length = 0;
    while (length < rest_.size() && IsAsciiLetter(rest_[length])) ++length;
    const std::string word = LowerAscii(rest_.substr(0, length));
    for (std::size_t i = 0; i < kMonths.size(); ++i) {
      const std::string name = LowerAscii(kMonths[i]);
      if (word == name || word == name.substr(0, kShortName)) {
        rest_.remove_prefix(length);
        return static_cast<int>(i + 1);
      }
    }
    return 0;
  }

  // False for what has no form of a date; nothing in `date` for a day that there is not.
  bool ReadDay(DateFieldOrder order, std::optional<sys_days>& date) {
    const std::string_view all = rest_;
    std::size_t digits = 0;
    const int first = Number(8, digits);
    const char separator = rest_.empty() ? '\0' : rest_[0];
    const bool is_whole = separator == '\0' || separator == ' ' || separator == 'T';
    if (digits == 8 && is_whole) {
      date = Day(first / 10000, first / 100 % 100, first % 100);
      return true;
    }
    if (digits == 6 && is_whole) {
      date = Day(FullYear(first / 10000, 2), first / 100 % 100, first % 100);
      return true;
    }
    if (digits == 4 && rest_.empty()) {
      date = Day(first, 1, 1);
      return true;
    }
    const bool is_number = digits == 1 || digits == 2 || digits == 4;
    if (is_number && (separator == '-' || separator == '/' || separator == '.') &&
        rest_.size() > 1 && IsDateDigit(rest_[1]))
      return ReadNumbers(first, digits, separator, order, date);
    rest_ = all;
    return ReadNamedMonth(date);
  }

  bool ReadNumbers(int first, std::size_t first_digits, char separator, DateFieldOrder order,
                   std::optional<sys_days>& date) {
    Take(separator);
    std::size_t digits = 0;
    const int second = Number(2, digits);
    if (digits == 0 || !Take(separator)) return false;
    const int third = Number(4, digits);
    if (digits != 1 && digits != 2 && digits != 4) return false;
    const bool year_comes_first = first_digits == 4 || order == DateFieldOrder::kYearMonthDay;
    if (year_comes_first) {
      if (digits == 4) return false;
      date = Day(FullYear(first, first_digits), second, third);
      return true;
    }
    if (digits == 1) return false;
    const int year = FullYear(third, digits);
    date = order == DateFieldOrder::kMonthDayYear ? Day(year, first, second)
                                                  : Day(year, second, first);
    return true;
  }

  // A month by its name, a year, and a day or none, in any order.
  bool ReadNamedMonth(std::optional<sys_days>& date) {
    int month = 0;
    int year = 0;
    int day = 0;
    for (int part = 0; part < 3 && !SeesTime(); ++part) {
      std::size_t digits = 0;
      const int number = Number(4, digits);
      if (digits == 4 && year == 0) {
        year = number;
      } else if (digits == 1 || digits == 2) {
        if (day == 0)
          day = number;
        else if (year == 0)
          year = FullYear(number, digits);
        else
          return false;
      } else if (digits != 0 || month != 0 || (month = Month()) == 0) {
        return false;
      }
      const std::string_view before = rest_;
      SkipBlanks();
      if (Take(',') || Take('-') || Take('/') || Take('.')) SkipBlanks();
      if (rest_.empty() || (!IsDateDigit(rest_[0]) && !IsAsciiLetter(rest_[0]))) {
        rest_ = before;
        break;
      }
    }
    if (month == 0 || year == 0) return false;
    SkipBlanks();
    date = Day(year, month, day == 0 ? 1 : day);
    return true;
  }

  // False for what has no form of a time; nothing in `time` for a time that there is not.
  bool ReadTime(std::optional<milliseconds>& time, bool& has_long_fraction) {
    std::size_t digits = 0;
    int hour = Number(2, digits);
    if (digits == 0) return false;
    int minute = 0;
    int second = 0;
    int thousandths = 0;
    const bool has_minutes = Take(':');
    if (has_minutes) {
      minute = Number(2, digits);
      if (digits == 0) return false;
      if (Take(':')) {
        second = Number(2, digits);
        if (digits == 0) return false;
        if (!ReadFraction(thousandths, has_long_fraction)) return false;
      }
    }
    SkipBlanks();
    bool is_possible = hour < 24 && minute < 60 && second < 60;
    if (IsHalfOfDay(rest_)) {
      is_possible = is_possible && hour >= 1 && hour <= 12;
      hour = hour % 12 + (rest_[0] == 'P' || rest_[0] == 'p' ? 12 : 0);
      rest_.remove_prefix(2);
    } else if (!has_minutes) {
      return false;
    } else if (Take('Z')) {
      has_long_fraction = false;
    }
    SkipBlanks();
    time.reset();
    if (is_possible)
      time = hours{hour} + minutes{minute} + seconds{second} + milliseconds{thousandths};
    return true;
  }

  // ".250", or ":250", which counts thousandths.
  bool ReadFraction(int& thousandths, bool& has_long_fraction) {
    const bool counts = Take(':');
    if (!counts && !Take('.')) return true;
    std::size_t digits = 0;
    thousandths = Number(3, digits);
    if (digits == 0) return false;
    for (std::size_t place = digits; !counts && place < 3; ++place) thousandths *= 10;
    Number(6, digits);
    has_long_fraction = digits > 0;
    return true;
  }

  std::string_view rest_;
};

// Digits at fixed places: -1 for anything else.
int DigitsAt(std::string_view text, std::size_t at, std::size_t count) {
  int number = 0;
  for (std::size_t i = at; i < at + count; ++i) {
    if (i >= text.size() || !IsDateDigit(text[i])) return -1;
    number = number * 10 + (text[i] - '0');
  }
  return number;
}

// "Z", "+01:00", "-0130" or nothing.
bool IsZone(std::string_view text) {
  while (text.starts_with(' ')) text.remove_prefix(1);
  while (text.ends_with(' ')) text.remove_suffix(1);
  if (text.empty() || text == "Z") return true;
  if (text[0] != '+' && text[0] != '-') return false;
  const std::size_t minutes_at = text.find(':') == 3 ? 4 : 3;
  return DigitsAt(text, 1, 2) >= 0 && (text.size() == 3 || (text.size() == minutes_at + 2 &&
                                                            DigitsAt(text, minutes_at, 2) >= 0));
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

DateText ReadDateText(std::string_view text, DateFieldOrder order) {
  while (text.ends_with(' ')) text.remove_suffix(1);
  return DateReader{text}.Read(order);
}

std::optional<SqlMoment> ReadStoredDate(std::string_view text) {
  constexpr std::size_t kDay = 10;      // "2026-11-16"
  constexpr std::size_t kMinutes = 16;  // "2026-11-16 15:07"
  constexpr std::size_t kSeconds = 19;
  if (text.size() < kDay || text[4] != '-' || text[7] != '-') return std::nullopt;
  const std::optional<sys_days> day =
      Day(DigitsAt(text, 0, 4), DigitsAt(text, 5, 2), DigitsAt(text, 8, 2));
  if (!day) return std::nullopt;
  if (text.size() == kDay) return *day;
  const int hour = DigitsAt(text, kDay + 1, 2);
  const int minute = DigitsAt(text, kDay + 4, 2);
  if ((text[kDay] != ' ' && text[kDay] != 'T') || hour < 0 || hour > 23 || minute < 0 ||
      minute > 59 || text[kDay + 3] != ':')
    return text.find_first_not_of(' ', kDay) == std::string_view::npos ? day : std::nullopt;
  SqlMoment moment = *day + hours{hour} + minutes{minute};
  std::string_view rest = text.substr(kMinutes);
  if (rest.starts_with(':')) {
    const int second = DigitsAt(text, kMinutes + 1, 2);
    if (second < 0 || second > 59) return std::nullopt;
    moment += seconds{second};
    rest = text.substr(kSeconds);
    if (rest.starts_with('.')) {
      const std::size_t digits = std::min(rest.find_first_not_of("0123456789", 1), rest.size()) - 1;
      if (digits == 0) return std::nullopt;
      int thousandths = 0;
      for (std::size_t i = 0; i < 3; ++i)
        thousandths = thousandths * 10 + (i < digits ? rest[i + 1] - '0' : 0);
      moment += milliseconds{thousandths};
      rest.remove_prefix(digits + 1);
    }
  }
  return IsZone(rest) ? std::optional{moment} : std::nullopt;
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
