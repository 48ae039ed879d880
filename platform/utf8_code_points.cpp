#include "platform/utf8_code_points.h"

namespace pxscheduler {

namespace {

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

unsigned char Byte(char32_t bits) { return static_cast<unsigned char>(bits); }

}  // namespace

char32_t NextCodePoint(std::wstring_view text, std::size_t& position) {
  const auto unit = static_cast<char32_t>(text[position++]);
  if (IsHighSurrogate(unit) && sizeof(wchar_t) == 2 && position < text.size()) {
    const auto low = static_cast<char32_t>(text[position]);
    if (IsLowSurrogate(low)) {
      ++position;
      return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
    }
  }
  const bool valid = !IsHighSurrogate(unit) && !IsLowSurrogate(unit) && unit <= 0x10FFFF;
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
