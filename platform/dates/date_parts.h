#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>

#include "platform/dates/date_words.h"

namespace pxscheduler {

struct DateNumber {
  int value = 0;
  std::size_t digits = 0;
};

// A few numbers in the order of the text.
class DateNumbers {
 public:
  static constexpr std::size_t kMost = 4;  // three of the date and an hour without minutes

  std::size_t Count() const { return count_; }
  const DateNumber& operator[](std::size_t index) const { return numbers_[index]; }
  // Only where there are fewer than kMost.
  void Add(const DateNumber& number) { numbers_[count_++] = number; }
  void Remove(std::size_t index) {
    std::copy(numbers_.begin() + index + 1, numbers_.begin() + count_, numbers_.begin() + index);
    --count_;
  }

 private:
  std::array<DateNumber, kMost> numbers_;
  std::size_t count_ = 0;
};

// What a date text says, before it is decided which number is the day, the month and the year.
struct DateParts {
  DateNumbers numbers;   // at most 3
  unsigned month = 0;    // 1 to 12 where the month is named, else 0
  bool weekday = false;  // a weekday is named
  std::optional<std::chrono::seconds> time_of_day;
};

// Takes a text apart: numbers, names and a time of day, between blanks and single separators.
// `time_separator` is accepted beside ":" once the date is complete. `words` is called only where
// the text holds letters. Nothing where the text cannot be a date.
std::optional<DateParts> ParseDateParts(std::wstring_view text, wchar_t time_separator,
                                        const std::function<const DateWords&()>& words);

}  // namespace pxscheduler
