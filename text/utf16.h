#pragma once

// The surrogates of UTF-16 (RFC 2781): a code point beyond U+FFFF is a high one and a low one.

namespace pxscheduler {

constexpr bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }
constexpr bool IsSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDFFF; }

constexpr char32_t JoinSurrogates(char32_t high, char32_t low) {
  return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

// Of a code point beyond U+FFFF.
constexpr char32_t HighSurrogate(char32_t code_point) {
  return 0xD800 + ((code_point - 0x10000) >> 10);
}
constexpr char32_t LowSurrogate(char32_t code_point) {
  return 0xDC00 + ((code_point - 0x10000) & 0x3FF);
}

}  // namespace pxscheduler
