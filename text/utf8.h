#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// UTF-8 (RFC 3629), which sockets, files and databases speak, and wide text, which is UTF-32 on
// Linux and UTF-16 on Windows. Malformed bytes, lone surrogates and numbers beyond U+10FFFF become
// U+FFFD.

namespace pxscheduler {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

std::string ToUtf8(std::wstring_view text);
std::wstring FromUtf8(std::string_view bytes);
// Appends to `out`, for callers that reuse a buffer.
void AppendUtf8(std::wstring_view text, std::string& out);

// The code point at `position`, 0-based, which moves past it: one unit, or two where wide text is
// UTF-16.
char32_t NextCodePoint(std::wstring_view text, std::size_t& position);

struct Utf8Bytes {
  unsigned char bytes[4];
  std::size_t size;  // 1 to 4
};

// `code_point` is what NextCodePoint returns.
Utf8Bytes EncodeUtf8(char32_t code_point);

}  // namespace pxscheduler
