#include "data/rows/sort_key.h"

#include <algorithm>
#include <charconv>
#include <chrono>

#include "platform/letter_case.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

constexpr char kNullRank = 1;
constexpr char kNumberRank = 2;
constexpr char kDateRank = 3;
constexpr char kTextRank = 4;

constexpr char kNegative = 1;
constexpr char kZero = 2;
constexpr char kPositive = 3;

template <typename Unsigned>
void AppendBigEndian(Unsigned number, std::string& out) {
  for (int shift = static_cast<int>(sizeof number - 1) * 8; shift >= 0; shift -= 8)
    out += static_cast<char>(std::uint64_t{number} >> static_cast<unsigned>(shift) & 0xFFU);
}

// A number's significant digits without outer zeros, and the power of ten of the first of them.
struct Scientific {
  std::string digits;
  int exponent = 0;
};

Scientific Normalize(std::string_view number) {
  Scientific result;
  const std::size_t mark = number.find_first_of("eE");
  if (mark != std::string_view::npos) {
    std::string_view exponent = number.substr(mark + 1);
    if (exponent.starts_with('+')) exponent.remove_prefix(1);
    std::from_chars(exponent.data(), exponent.data() + exponent.size(), result.exponent);
    number = number.substr(0, mark);
  }
  const std::size_t point = std::min(number.find('.'), number.size());
  const std::size_t first = number.find_first_of("123456789");
  if (first == std::string_view::npos) return {};
  result.exponent += static_cast<int>(point) - static_cast<int>(first) - (first < point ? 1 : 0);
  for (const char character : number.substr(first))
    if (character != '.') result.digits += character;
  result.digits.resize(result.digits.find_last_not_of('0') + 1);
  return result;
}

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char character) { return static_cast<unsigned char>(character) < 0x80; });
}

}  // namespace

void AppendNullKey(std::string& out) { out += kNullRank; }

void AppendNumberKey(std::string_view number, std::string& out) {
  out += kNumberRank;
  const bool is_negative = number.starts_with('-');
  if (is_negative) number.remove_prefix(1);
  const bool is_infinite = number.starts_with('i');
  const Scientific scientific = is_infinite ? Scientific{} : Normalize(number);
  if (!is_infinite && scientific.digits.empty()) {
    out += kZero;
    return;
  }
  out += is_negative ? kNegative : kPositive;
  const std::size_t magnitude = out.size();
  AppendBigEndian(static_cast<std::uint16_t>(is_infinite ? 0xFFFF : scientific.exponent + 0x8000),
                  out);
  out += scientific.digits;
  if (!is_negative) return;
  // Of two negative numbers the one of greater magnitude comes first, so its longer digits too.
  for (std::size_t at = magnitude; at < out.size(); ++at)
    out[at] = static_cast<char>(~static_cast<unsigned char>(out[at]));
  out += static_cast<char>(0xFF);
}

void AppendDateKey(const DateTime& value, std::string& out) {
  out += kDateRank;
  const std::int64_t seconds =
      std::chrono::seconds{value.date.time_since_epoch()}.count() + value.time_of_day.count();
  AppendBigEndian(static_cast<std::uint64_t>(seconds) ^ (std::uint64_t{1} << 63U), out);
}

void AppendTextKey(std::string_view utf8, std::string& out) {
  out += kTextRank;
  if (!IsAscii(utf8)) {
    AppendUtf8(LowerCase(FromUtf8(utf8)), out);
    return;
  }
  const std::size_t start = out.size();
  out += utf8;
  for (std::size_t at = start; at < out.size(); ++at)
    if (out[at] >= 'A' && out[at] <= 'Z') out[at] = static_cast<char>(out[at] - 'A' + 'a');
}

}  // namespace pxscheduler
