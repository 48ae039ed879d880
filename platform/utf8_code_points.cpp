#include "platform/utf8_code_points.h"

#include "platform/utf16.h"

namespace pxscheduler {

namespace {

unsigned char Byte(char32_t bits) { return static_cast<unsigned char>(bits); }

}  // namespace

char32_t NextCodePoint(std::wstring_view text, std::size_t& position) {
  const auto unit = static_cast<char32_t>(text[position++]);
  if (IsHighSurrogate(unit) && sizeof(wchar_t) == 2 && position < text.size()) {
    const auto low = static_cast<char32_t>(text[position]);
    if (IsLowSurrogate(low)) {
      ++position;
      return JoinSurrogates(unit, low);
    }
  }
  const bool valid = !IsSurrogate(unit) && unit <= 0x10FFFF;
  return valid ? unit : kReplacementCharacter;
}

Utf8Bytes EncodeUtf8(char32_t code_point) {
  if (code_point < 0x80) {
    return {{Byte(code_point)}, 1};
  }
  const unsigned char last = Byte(0x80 | (code_point & 0x3F));
  if (code_point < 0x800) {
    return {{Byte(0xC0 | (code_point >> 6)), last}, 2};
  }
  const unsigned char third = Byte(0x80 | ((code_point >> 6) & 0x3F));
  if (code_point < 0x10000) {
    return {{Byte(0xE0 | (code_point >> 12)), third, last}, 3};
  }
  const unsigned char second = Byte(0x80 | ((code_point >> 12) & 0x3F));
  return {{Byte(0xF0 | (code_point >> 18)), second, third, last}, 4};
}

}  // namespace pxscheduler
