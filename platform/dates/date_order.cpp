#include "platform/dates/date_order.h"

#include <algorithm>
#include <cstddef>

namespace pxscheduler {
namespace {

using std::chrono::sys_days;

constexpr DateOrder kMonthDayYear{.year = 2, .month = 0, .day = 1};
constexpr DateOrder kDayMonthYear{.year = 2, .month = 1, .day = 0};
constexpr DateOrder kYearMonthDay{.year = 0, .month = 1, .day = 2};
constexpr DateOrder kYearDayMonth{.year = 0, .month = 2, .day = 1};

int YearOf(const DateNumber& number) {
  if (number.digits > 2) return number.value;
  return number.value + (number.value < 30 ? 2000 : 1900);
}

std::optional<sys_days> DateOf(int year, int month, int day) {
  if (year < 100 || year > 9999 || month < 1 || day < 1) return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year{year},
                                         std::chrono::month{static_cast<unsigned>(month)},
                                         std::chrono::day{static_cast<unsigned>(day)}};
  if (!date.ok()) return std::nullopt;
  return sys_days{date};
}

std::optional<sys_days> DateOf(const DateNumber& year, const DateNumber& month,
                               const DateNumber& day) {
  if (month.digits > 2 || day.digits > 2) return std::nullopt;
  return DateOf(YearOf(year), month.value, day.value);
}

std::optional<sys_days> InCurrentYear(int month, int day, const std::function<sys_days()>& today) {
  return DateOf(static_cast<int>(std::chrono::year_month_day{today()}.year()), month, day);
}

std::optional<sys_days> ThreeNumbers(const DateNumbers& numbers, const DateOrder& order) {
  const auto read = [&](const DateOrder& as) {
    return DateOf(numbers[static_cast<std::size_t>(as.year)],
                  numbers[static_cast<std::size_t>(as.month)],
                  numbers[static_cast<std::size_t>(as.day)]);
  };
  if (numbers[0].digits > 2) {
    const auto date = read(kYearMonthDay);
    return date ? date : read(kYearDayMonth);
  }
  const bool month_first = order.month < order.day;
  for (const DateOrder& as :
       {order, month_first ? kMonthDayYear : kDayMonthYear,
        month_first ? kDayMonthYear : kMonthDayYear, kYearMonthDay, kYearDayMonth})
    if (const auto date = read(as)) return date;
  return std::nullopt;
}

std::optional<sys_days> TwoNumbers(const DateNumber& first, const DateNumber& second,
                                   const DateOrder& order, const std::function<sys_days()>& today) {
  const DateNumber one{.value = 1, .digits = 1};
  if (first.digits <= 2 && second.digits <= 2) {
    const bool month_first = order.month < order.day;
    const DateNumber& month = month_first ? first : second;
    const DateNumber& day = month_first ? second : first;
    if (const auto date = InCurrentYear(month.value, day.value, today)) return date;
    if (const auto date = InCurrentYear(day.value, month.value, today)) return date;
  }
  if (const auto date = DateOf(second, first, one)) return date;
  return DateOf(first, second, one);
}

std::optional<sys_days> MonthAndTwoNumbers(unsigned month, const DateNumber& first,
                                           const DateNumber& second, const DateOrder& order) {
  const DateNumber named{.value = static_cast<int>(month), .digits = 2};
  const bool year_first = order.year < order.day;
  const DateNumber& year = year_first ? first : second;
  const DateNumber& day = year_first ? second : first;
  const auto date = DateOf(year, named, day);
  return date ? date : DateOf(day, named, year);
}

std::optional<sys_days> MonthAndNumber(unsigned month, const DateNumber& number,
                                       const std::function<sys_days()>& today) {
  if (number.digits <= 2) {
    if (const auto date = InCurrentYear(static_cast<int>(month), number.value, today)) return date;
  }
  return DateOf(YearOf(number), static_cast<int>(month), 1);
}

int PlaceOf(const std::vector<PictureItem>& picture, wchar_t letter) {
  int place = 0;
  for (const PictureItem& item : picture) {
    if (item.letter == 0 || (item.letter == L'd' && item.text.size() > 2)) continue;
    if (item.letter == letter) return place;
    ++place;
  }
  return -1;
}

// A separator, or a number with all its digits.
bool IsUnmistakable(const PictureItem& item) {
  if (item.letter == 0) return item.text.size() == 1 && IsDateSeparator(item.text[0]);
  return item.letter == L'y' ? item.text.size() > 2 : item.text.size() <= 2;
}

}  // namespace

DateOrder OrderOf(const std::vector<PictureItem>& short_date) {
  const DateOrder order{.year = PlaceOf(short_date, L'y'),
                        .month = PlaceOf(short_date, L'M'),
                        .day = PlaceOf(short_date, L'd')};
  const bool complete = std::min({order.year, order.month, order.day}) == 0 &&
                        std::max({order.year, order.month, order.day}) == 2;
  return complete ? order : kMonthDayYear;
}

bool ReadsBack(const std::vector<PictureItem>& short_date) {
  if (short_date.size() != 5) return false;
  for (std::size_t i = 0; i < short_date.size(); ++i) {
    const bool is_number = short_date[i].letter != 0;
    if (is_number != (i % 2 == 0) || !IsUnmistakable(short_date[i])) return false;
  }
  const int year = PlaceOf(short_date, L'y');
  const int month = PlaceOf(short_date, L'M');
  const int day = PlaceOf(short_date, L'd');
  return std::min({year, month, day}) == 0 && (year != 0 || month == 1);
}

std::optional<sys_days> ResolveDate(const DateParts& parts, const DateOrder& order,
                                    const std::function<sys_days()>& today) {
  const DateNumbers& numbers = parts.numbers;
  if (parts.month == 0) {
    if (numbers.Count() == 3) return ThreeNumbers(numbers, order);
    if (numbers.Count() == 2) return TwoNumbers(numbers[0], numbers[1], order, today);
    return std::nullopt;
  }
  if (numbers.Count() == 2) return MonthAndTwoNumbers(parts.month, numbers[0], numbers[1], order);
  if (numbers.Count() == 1) return MonthAndNumber(parts.month, numbers[0], today);
  return std::nullopt;
}

}  // namespace pxscheduler
