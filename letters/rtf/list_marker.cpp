#include "letters/rtf/list_marker.h"

#include <array>
#include <string_view>
#include <utility>

#include "text/ascii_case.h"

namespace pxscheduler {
namespace {

std::wstring Letters(long number) {
  std::wstring letters;
  for (; number > 0; number = (number - 1) / 26)
    letters.insert(letters.begin(), static_cast<wchar_t>(L'a' + (number - 1) % 26));
  return letters;
}

std::wstring RomanNumeral(long number) {
  constexpr std::array<std::pair<long, std::wstring_view>, 13> kDigits = {{{1000, L"m"},
                                                                           {900, L"cm"},
                                                                           {500, L"d"},
                                                                           {400, L"cd"},
                                                                           {100, L"c"},
                                                                           {90, L"xc"},
                                                                           {50, L"l"},
                                                                           {40, L"xl"},
                                                                           {10, L"x"},
                                                                           {9, L"ix"},
                                                                           {5, L"v"},
                                                                           {4, L"iv"},
                                                                           {1, L"i"}}};
  std::wstring numeral;
  for (const auto& [value, digit] : kDigits)
    for (; number >= value; number -= value) numeral += digit;
  return numeral;
}

long ValueOfRoman(std::wstring_view numeral) {
  constexpr std::wstring_view kDigits = L"ivxlcdm";
  constexpr std::array<long, 7> kValues = {1, 5, 10, 50, 100, 500, 1000};
  long value = 0;
  long before = 0;
  for (const wchar_t letter : numeral) {
    const std::size_t digit = kDigits.find(letter);
    if (digit == std::wstring_view::npos) return 0;
    if (kValues.at(digit) > before) value -= 2 * before;
    before = kValues.at(digit);
    value += before;
  }
  return value;
}

long ValueOfDigits(std::wstring_view digits) {
  long value = 0;
  for (const wchar_t digit : digits) {
    if (digit < L'0' || digit > L'9' || value > 1000) return 0;
    value = value * 10 + (digit - L'0');
  }
  return value;
}

}  // namespace

long NumberOfMarker(std::wstring_view marker, wchar_t style) {
  constexpr std::size_t kLongest = 15;  // of a Roman numeral up to 3999
  const std::wstring_view shown = marker.substr(0, marker.find(L'.'));
  if (shown.empty() || shown.size() > kLongest) return 0;
  const std::wstring lower = LowerAscii(shown);
  long value = 0;
  if (style == L'i' || style == L'I')
    value = ValueOfRoman(lower);
  else if (style == L'1')
    value = ValueOfDigits(shown);
  else if ((style == L'a' || style == L'A') && shown.size() == 1)
    value = lower.front() - L'a' + 1;
  return value > 0 && value <= 3999 && ListNumber(value, style) == shown ? value : 0;
}

std::wstring ListNumber(long number, wchar_t style) {
  const bool roman = style == L'i' || style == L'I';
  const bool letters = style == L'a' || style == L'A';
  if ((!roman && !letters) || number < 1 || number > 3999) return std::to_wstring(number);
  std::wstring text = roman ? RomanNumeral(number) : Letters(number);
  if (style == L'I' || style == L'A')
    for (wchar_t& letter : text) letter = static_cast<wchar_t>(letter - L'a' + L'A');
  return text;
}

}  // namespace pxscheduler
