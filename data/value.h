#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "platform/civil_time.h"
#include "platform/regional.h"

namespace pxscheduler {

// An exact decimal number as plain text: an optional "-", digits, and "." with digits where there
// is a fraction, without superfluous zeros in front.
struct Decimal {
  std::string digits;

  friend bool operator==(const Decimal&, const Decimal&) = default;
};

// One field of a row. std::monostate is Null.
using Value = std::variant<std::monostate, bool, std::int64_t, float, double, Decimal, DateTime,
                           std::wstring>;

// The value joined to the empty text: Null "", Boolean "True" or "False", numbers plain (a float
// with up to 7 significant digits, a double with up to 15), dates in the general date form.
std::wstring TextOf(const Regional& regional, Value value);

// FormatShortDate and FormatMonthDay of that text.
std::wstring ShortDateOf(const Regional& regional, Value value);
std::wstring MonthDayOf(const Regional& regional, Value value);

// Whether the value counts as true: a number that is not zero; Null is false; text as
// BooleanFromText reads it. A date counts by its serial number, so every date is true.
bool IsTrue(const Value& value);

// "True" or "False" without regard to case, or a number, which is true unless zero; surrounding
// white space is ignored. Raises TypeMismatch (13) for any other text, the empty one included.
bool BooleanFromText(std::wstring_view text);

// The number at the start of the text: blanks are ignored everywhere, and reading stops at the
// first character that cannot continue a number (sign, digits, point, exponent). 0 where the text
// does not begin with a number. Raises Overflow (6) outside the range of a double.
double LeadingNumber(std::wstring_view text);

// Rounded to a whole number, halves to the even neighbour. Raises Overflow (6) outside 32 bits.
std::int32_t ToWholeNumber(double number);

}  // namespace pxscheduler
