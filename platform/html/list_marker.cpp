#include "platform/html/list_marker.h"

#include <array>
#include <string_view>
#include <utility>

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

}  // namespace

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
