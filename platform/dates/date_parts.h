#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/dates/date_words.h"

namespace pxscheduler {

struct DateNumber {
  int value = 0;
  std::size_t digits = 0;
};

// What a date text says, before it is decided which number is the day, the month and the year.
struct DateParts {
  std::vector<DateNumber> numbers;  // at most 3, in the order of the text
  unsigned month = 0;               // 1 to 12 where the month is named, else 0
  bool weekday = false;             // a weekday is named
  std::optional<std::chrono::seconds> time_of_day;
};

// Takes a text apart: numbers, names and a time of day, between blanks and single separators.
// `time_separator` is accepted beside ":" once the date is complete. `words` is called only where
// the text holds letters. Nothing where the text cannot be a date.
std::optional<DateParts> ParseDateParts(std::wstring_view text, wchar_t time_separator,
                                        const std::function<const DateWords&()>& words);

}  // namespace pxscheduler
