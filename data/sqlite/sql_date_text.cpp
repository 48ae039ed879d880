#include "data/sqlite/sql_date_text.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "data/sqlite/sql_token.h"
#include "text/ascii_case.h"

namespace pxscheduler {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr unsigned kMonthsOfYear = 12;
constexpr std::size_t kShortMonthName = 3;  // letters

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
    for (unsigned month = 1; month <= kMonthsOfYear; ++month) {
      const std::string name = LowerAscii(EnglishMonth(month));
      if (word == name || word == name.substr(0, kShortMonthName)) {
        rest_.remove_prefix(length);
        return static_cast<int>(month);
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

}  // namespace

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

}  // namespace pxscheduler
