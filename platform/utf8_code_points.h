#pragma once

#include <cstddef>
#include <string_view>

namespace pxscheduler {

// What stands for a character that cannot be read.
inline constexpr char32_t kReplacementCharacter = 0xFFFD;

// The code point that begins at `position`, which moves past it: one unit, or two where wide text
// is UTF-16. What is no code point (a lone surrogate, a number beyond U+10FFFF) reads as U+FFFD.
char32_t NextCodePoint(std::wstring_view text, std::size_t& position);

struct Utf8Bytes {
  unsigned char bytes[4];
  std::size_t size;  // 1 to 4
};

// `code_point` is what NextCodePoint returns.
Utf8Bytes EncodeUtf8(char32_t code_point);

}  // namespace pxscheduler
