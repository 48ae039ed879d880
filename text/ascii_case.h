#pragma once

#include <concepts>
#include <string>
#include <string_view>

namespace pxscheduler {

// The letters of protocols and formats, whose case has nothing to do with any language.
template <std::integral Character>
constexpr Character LowerAscii(Character letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<Character>(letter - 'A' + 'a') : letter;
}

inline std::string LowerAscii(std::string_view text) {
  std::string lower(text);
  for (char& letter : lower) letter = LowerAscii(letter);
  return lower;
}

}  // namespace pxscheduler
