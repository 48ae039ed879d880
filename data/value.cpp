#include "data/value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <system_error>
#include <type_traits>
#include <utility>

#include "platform/letter_case.h"
#include "platform/runtime_error.h"
#include "text/text.h"

namespace pxscheduler {
namespace {

bool IsDigit(wchar_t character) { return character >= L'0' && character <= L'9'; }

std::wstring Widen(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

// What "%.*G" of the C locale writes, apart from numbers that are not finite.
template <typename Number>
std::wstring FloatingText(Number number) {
  if (std::isnan(number)) return L"-1.#IND";
  if (std::isinf(number)) return number < 0 ? L"-1.#INF" : L"1.#INF";
  if (number == 0) return L"0";  // negative zero too
  std::array<char, 40> buffer{};
  const auto written = std::to_chars(
      buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::general,
      std::numeric_limits<Number>::digits10 + (std::is_same_v<Number, float> ? 1 : 0));
  std::replace(buffer.data(), written.ptr, 'e', 'E');
  return Widen({buffer.data(), written.ptr});
}

std::wstring WholeNumberText(std::int64_t number) {
  std::wstring text;
  AppendWholeNumber(number, text);
  return text;
}

std::wstring DecimalText(std::string_view digits) {
  if (digits.find('.') != std::string_view::npos) {
    digits = digits.substr(0, digits.find_last_not_of('0') + 1);
    if (digits.ends_with('.')) digits.remove_suffix(1);
  }
  const bool is_zero = digits.find_first_of("123456789") == std::string_view::npos;
  return is_zero ? L"0" : Widen(digits);
}

// The longest number at the start of the text, with "E" for the exponent mark. `read` becomes the
// count of its characters in the text.
std::string ScanNumber(std::wstring_view text, std::size_t& read) {
  std::string number;
  std::size_t at = 0;
  const auto take_digits = [&] {
    const std::size_t first = at;
    for (; at < text.size() && IsDigit(text[at]); ++at) number += static_cast<char>(text[at]);
    return at - first;
  };
  read = 0;
  if (at < text.size() && (text[at] == L'-' || text[at] == L'+')) {
    if (text[at] == L'-') number += '-';
    ++at;
  }
  std::size_t mantissa_digits = take_digits();
  if (at < text.size() && text[at] == L'.') {
    ++at;
    number += '.';
    mantissa_digits += take_digits();
  }
  if (mantissa_digits == 0) return {};
  read = at;
  const std::size_t mantissa_size = number.size();
  if (at < text.size() && std::wstring_view{L"eEdD"}.find(text[at]) != std::wstring_view::npos) {
    ++at;
    number += 'E';
    if (at < text.size() && (text[at] == L'-' || text[at] == L'+')) {
      number += text[at] == L'-' ? '-' : '+';
      ++at;
    }
    if (take_digits() > 0)
      read = at;
    else
      number.resize(mantissa_size);
  }
  return number;
}

// The value of what ScanNumber gave. A number too small for a double is 0; one too large raises
// Overflow.
double NumberFrom(const std::string& scanned) {
  if (scanned.empty()) return 0;
  double number = 0;
  const auto result = std::from_chars(scanned.data(), scanned.data() + scanned.size(), number);
  if (result.ec != std::errc::result_out_of_range) return number;
  const std::size_t exponent = scanned.find('E');
  const bool is_small =
      exponent != std::string::npos ? scanned[exponent + 1] == '-' : scanned.find('.') <= 2;
  if (!is_small) throw Overflow();
  return 0;
}

std::wstring_view TrimWhiteSpace(std::wstring_view text) {
  constexpr std::wstring_view kWhiteSpace = L" \t\r\n";
  const std::size_t first = text.find_first_not_of(kWhiteSpace);
  if (first == std::wstring_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

// The date of a value whose text reads back as that date, so that it need not be written and read.
std::optional<std::chrono::sys_days> DateKeptByText(const Regional& regional, const Value& value) {
  constexpr std::chrono::sys_days kFirst = std::chrono::year{100} / std::chrono::January / 1;
  constexpr std::chrono::sys_days kLast = std::chrono::year{9999} / std::chrono::December / 31;
  const auto* const moment = std::get_if<DateTime>(&value);
  const bool is_kept = moment != nullptr && moment->time_of_day == std::chrono::seconds{0} &&
                       moment->date >= kFirst && moment->date <= kLast &&
                       regional.ReadsBackShortDates();
  return is_kept ? std::optional(moment->date) : std::nullopt;
}

}  // namespace

std::wstring TextOf(const Regional& regional, Value value) {
  return std::visit(
      [&regional](auto&& held) -> std::wstring {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, std::monostate>)
          return {};
        else if constexpr (std::is_same_v<Held, bool>)
          return held ? L"True" : L"False";
        else if constexpr (std::is_same_v<Held, std::int64_t>)
          return WholeNumberText(held);
        else if constexpr (std::is_floating_point_v<Held>)
          return FloatingText(held);
        else if constexpr (std::is_same_v<Held, Decimal>)
          return DecimalText(held.digits);
        else if constexpr (std::is_same_v<Held, DateTime>)
          return GeneralDate(regional, held);
        else
          return std::forward<decltype(held)>(held);
      },
      std::move(value));
}

std::wstring ShortDateOf(const Regional& regional, Value value) {
  const auto date = DateKeptByText(regional, value);
  return date ? regional.ShortDate(*date)
              : FormatShortDate(regional, TextOf(regional, std::move(value)));
}

std::wstring MonthDayOf(const Regional& regional, Value value) {
  const auto date = DateKeptByText(regional, value);
  return date ? MonthDay(regional, *date)
              : FormatMonthDay(regional, TextOf(regional, std::move(value)));
}

bool IsTrue(const Value& value) {
  return std::visit(
      [](const auto& held) -> bool {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, std::monostate>)
          return false;
        else if constexpr (std::is_same_v<Held, bool>)
          return held;
        else if constexpr (std::is_arithmetic_v<Held>)
          return held != 0;
        else if constexpr (std::is_same_v<Held, Decimal>)
          return held.digits.find_first_of("123456789") != std::string::npos;
        else if constexpr (std::is_same_v<Held, DateTime>)
          return true;
        else
          return BooleanFromText(held);
      },
      value);
}

bool BooleanFromText(std::wstring_view text) {
  const std::wstring lower = LowerCase(TrimWhiteSpace(text));
  if (lower == L"true") return true;
  if (lower == L"false") return false;
  std::size_t read = 0;
  const std::string number = ScanNumber(lower, read);
  if (number.empty() || read != lower.size()) throw TypeMismatch();
  return NumberFrom(number) != 0;
}

double LeadingNumber(std::wstring_view text) {
  std::wstring compact;
  for (const wchar_t character : text)
    if (character != L' ' && character != L'\t' && character != L'\n') compact += character;
  std::size_t read = 0;
  return NumberFrom(ScanNumber(compact, read));
}

std::int32_t ToWholeNumber(double number) {
  double whole = std::floor(number);
  const double fraction = number - whole;
  if (fraction > 0.5 || (fraction == 0.5 && std::fmod(whole, 2) != 0)) whole += 1;
  if (!(whole >= std::numeric_limits<std::int32_t>::min() &&
        whole <= std::numeric_limits<std::int32_t>::max()))
    throw Overflow();
  return static_cast<std::int32_t>(whole);
}

}  // namespace pxscheduler
