#include "platform/dates/date_parts.h"

#include <string>
#include <vector>

#include "platform/letter_case.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kMostDigits = 4;  // of one number: a year

class Parser {
 public:
  Parser(std::wstring_view text, wchar_t time_separator,
         const std::function<const DateWords&()>& words)
      : text_(text), time_separator_(time_separator), words_(words) {}

  std::optional<DateParts> Parse();

 private:
  enum class Last { kNothing, kNumber, kTime, kWord, kSeparator };

  wchar_t At(std::size_t position) const { return position < text_.size() ? text_[position] : 0; }
  bool ParseItem();
  bool ParseSeparator();
  bool ParseNumber();
  bool ParseWord();
  bool ParseTime(int hour);
  bool TakeDesignator(Designator designator);
  std::optional<DateNumber> Digits();
  bool StartsTime() const;
  bool DateIsComplete() const;
  bool SettleNames();
  bool SettleTime();

  std::wstring_view text_;
  wchar_t time_separator_;
  const std::function<const DateWords&()>& words_;
  std::wstring lower_;  // made when the first letter is met
  std::size_t position_ = 0;
  Last last_ = Last::kNothing;
  wchar_t separator_ = 0;  // the last one
  DateParts parts_;
  std::vector<unsigned> months_or_weekdays_;  // names that can be either, as months
  std::optional<int> hour_;
  std::optional<std::size_t> hour_alone_;  // the number that a designator follows
  int minute_ = 0;
  int second_ = 0;
  Designator designator_ = Designator::kNone;
};

std::optional<DateParts> Parser::Parse() {
  while (position_ < text_.size())
    if (IsBlankCharacter(text_[position_]))
      ++position_;
    else if (!ParseItem())
      return std::nullopt;
  if (last_ == Last::kSeparator && separator_ != L'.') return std::nullopt;
  if (!SettleTime() || !SettleNames()) return std::nullopt;
  return parts_;
}

bool Parser::ParseItem() {
  if (IsDigit(text_[position_])) return ParseNumber();
  if (IsDateSeparator(text_[position_])) return ParseSeparator();
  return ParseWord();
}

bool Parser::ParseSeparator() {
  if (last_ == Last::kNothing || last_ == Last::kSeparator) return false;
  separator_ = text_[position_];
  ++position_;
  last_ = Last::kSeparator;
  return true;
}

std::optional<DateNumber> Parser::Digits() {
  DateNumber number;
  for (; IsDigit(At(position_)); ++position_) {
    if (++number.digits > kMostDigits) return std::nullopt;
    number.value = number.value * 10 + static_cast<int>(text_[position_] - L'0');
  }
  if (number.digits == 0) return std::nullopt;
  return number;
}

bool Parser::DateIsComplete() const {
  return parts_.numbers.Count() + (parts_.month != 0 ? 1 : 0) + months_or_weekdays_.size() >= 3;
}

// Standing after a number.
bool Parser::StartsTime() const {
  if (!IsDigit(At(position_ + 1))) return false;
  return At(position_) == L':' || (At(position_) == time_separator_ && DateIsComplete());
}

bool Parser::ParseNumber() {
  const std::optional<DateNumber> number = Digits();
  if (!number) return false;
  if (StartsTime()) return number->digits <= 2 && ParseTime(number->value);
  if (parts_.numbers.Count() == DateNumbers::kMost) return false;
  parts_.numbers.Add(*number);
  last_ = Last::kNumber;
  return true;
}

bool Parser::ParseTime(int hour) {
  if (hour_) return false;
  hour_ = hour;
  const wchar_t separator = text_[position_];
  for (int* part : {&minute_, &second_}) {
    if (At(position_) != separator || !IsDigit(At(position_ + 1))) break;
    ++position_;
    const std::optional<DateNumber> number = Digits();
    if (!number || number->digits > 2 || number->value > 59) return false;
    *part = number->value;
  }
  // A fraction of a second is dropped.
  if (separator == L':' && At(position_) == L'.' && IsDigit(At(position_ + 1))) do {
      ++position_;
    } while (IsDigit(At(position_)));
  last_ = Last::kTime;
  return true;
}

bool Parser::ParseWord() {
  if (lower_.empty()) lower_ = LowerCase(text_);
  if (lower_[position_] == L't' && last_ == Last::kNumber && IsDigit(At(position_ - 1)) &&
      IsDigit(At(position_ + 1)) && DateIsComplete()) {
    separator_ = text_[position_];
    ++position_;
    last_ = Last::kSeparator;
    return true;
  }
  const DateWord* word = words_().Longest(lower_, position_);
  if (word == nullptr) return false;
  position_ += word->text.size();
  if (word->designator != Designator::kNone) return TakeDesignator(word->designator);
  if (word->month != 0 && word->weekday) {
    months_or_weekdays_.push_back(word->month);
    if (months_or_weekdays_.size() > 2) return false;
  } else if (word->month != 0) {
    if (parts_.month != 0) return false;
    parts_.month = word->month;
  } else if (word->weekday) {
    if (parts_.weekday) return false;
    parts_.weekday = true;
  }
  last_ = Last::kWord;
  return true;
}

bool Parser::TakeDesignator(Designator designator) {
  if (designator_ != Designator::kNone) return false;
  designator_ = designator;
  if (last_ == Last::kNumber) hour_alone_ = parts_.numbers.Count() - 1;
  last_ = Last::kWord;
  return true;
}

// A name that can be a month or a weekday is the month where nothing else is.
bool Parser::SettleNames() {
  if (!months_or_weekdays_.empty() && parts_.month == 0 && parts_.numbers.Count() < 3) {
    parts_.month = months_or_weekdays_.back();
    months_or_weekdays_.pop_back();
  }
  if (months_or_weekdays_.size() + (parts_.weekday ? 1 : 0) > 1) return false;
  if (!months_or_weekdays_.empty()) parts_.weekday = true;
  return parts_.numbers.Count() + (parts_.month != 0 ? 1 : 0) <= 3;
}

bool Parser::SettleTime() {
  if (!hour_ && hour_alone_) {
    const DateNumber number = parts_.numbers[*hour_alone_];
    if (number.digits > 2) return false;
    hour_ = number.value;
    parts_.numbers.Remove(*hour_alone_);
  }
  if (!hour_) return designator_ == Designator::kNone;
  int hour = *hour_;
  if (designator_ == Designator::kMorning) {
    if (hour > 12) return false;
    hour %= 12;
  } else if (designator_ == Designator::kAfternoon && hour < 12) {
    hour += 12;
  }
  if (hour > 23) return false;
  parts_.time_of_day =
      std::chrono::hours{hour} + std::chrono::minutes{minute_} + std::chrono::seconds{second_};
  return true;
}

}  // namespace

std::optional<DateParts> ParseDateParts(std::wstring_view text, wchar_t time_separator,
                                        const std::function<const DateWords&()>& words) {
  return Parser(text, time_separator, words).Parse();
}

}  // namespace pxscheduler
