#pragma once

#include <concepts>
#include <string>
#include <string_view>

// The letters of protocols and formats, whose case has nothing to do with any language.

namespace pxscheduler {

template <std::integral Character>
constexpr Character LowerAscii(Character letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<Character>(letter - 'A' + 'a') : letter;
}

template <std::integral Character>
constexpr bool IsAsciiLetter(Character character) {
  return LowerAscii(character) >= 'a' && LowerAscii(character) <= 'z';
}

inline std::string LowerAscii(std::string_view text) {
  std::string lower(text);
  for (char& letter : lower) letter = LowerAscii(letter);
  return lower;
}

inline std::wstring LowerAscii(std::wstring_view text) {
  std::wstring lower(text);
  for (wchar_t& letter : lower) letter = LowerAscii(letter);
  return lower;
}

}  // namespace pxscheduler
