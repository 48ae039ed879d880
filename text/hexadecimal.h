#pragma once

#include <string>
#include <string_view>

namespace pxscheduler {

inline constexpr char kCapitalHexDigits[] = "0123456789ABCDEF";
inline constexpr char kSmallHexDigits[] = "0123456789abcdef";

// The value of a hexadecimal digit, capital or small; -1 for any other character.
template <typename Character>
constexpr int HexDigitValue(Character character) {
  if (character >= '0' && character <= '9') return character - '0';
  if (character >= 'a' && character <= 'f') return character - 'a' + 10;
  return character >= 'A' && character <= 'F' ? character - 'A' + 10 : -1;
}

// Two small digits a byte.
inline void AppendHexadecimal(std::string_view bytes, std::string& text) {
  for (const char byte : bytes) {
    text += kSmallHexDigits[static_cast<unsigned char>(byte) >> 4];
    text += kSmallHexDigits[static_cast<unsigned char>(byte) & 0xF];
  }
}

}  // namespace pxscheduler
