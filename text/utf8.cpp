#include "text/utf8.h"

#include <algorithm>

#include "text/utf16.h"

namespace pxscheduler {
namespace {

unsigned char Byte(char32_t bits) { return static_cast<unsigned char>(bits); }

void AppendWide(char32_t code_point, std::wstring& out) {
  if (sizeof(wchar_t) == 2 && code_point >= 0x10000) {
    out += static_cast<wchar_t>(HighSurrogate(code_point));
    out += static_cast<wchar_t>(LowSurrogate(code_point));
  } else {
    out += static_cast<wchar_t>(code_point);
  }
}

struct Sequence {
  char32_t code_point;
  std::size_t length;
};

// The sequence at the start of the bytes; for a malformed one the replacement character and the
// length of its longest correct beginning (Unicode, "maximal subparts").
Sequence ReadSequence(std::string_view bytes) {
  const auto at = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const unsigned char lead = at(0);
  if (lead < 0x80) return {lead, 1};
  const std::size_t length = lead < 0xC2   ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  if (length == 0) return {kReplacementCharacter, 1};
  char32_t code_point = lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const unsigned char lowest = i > 1 ? 0x80 : lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned char highest = i > 1 ? 0xBF : lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (i >= bytes.size() || at(i) < lowest || at(i) > highest) return {kReplacementCharacter, i};
    code_point = code_point << 6 | (at(i) & 0x3F);
  }
  return {code_point, length};
}

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
  if (code_point < 0x80) return {{Byte(code_point)}, 1};
  const unsigned char last = Byte(0x80 | (code_point & 0x3F));
  if (code_point < 0x800) return {{Byte(0xC0 | (code_point >> 6)), last}, 2};
  const unsigned char third = Byte(0x80 | ((code_point >> 6) & 0x3F));
  if (code_point < 0x10000) return {{Byte(0xE0 | (code_point >> 12)), third, last}, 3};
  const unsigned char second = Byte(0x80 | ((code_point >> 12) & 0x3F));
  return {{Byte(0xF0 | (code_point >> 18)), second, third, last}, 4};
}

void AppendUtf8(std::wstring_view text, std::string& out) {
  const auto is_ascii = [](wchar_t unit) { return static_cast<char32_t>(unit) < 0x80; };
  const auto* const beyond = std::find_if_not(text.begin(), text.end(), is_ascii);
  auto position = static_cast<std::size_t>(beyond - text.begin());
  const std::size_t size = out.size();
  out.resize(size + position);
  std::transform(text.begin(), beyond, out.data() + size,
                 [](wchar_t unit) { return static_cast<char>(unit); });
  while (position < text.size()) {
    const Utf8Bytes encoded = EncodeUtf8(NextCodePoint(text, position));
    out.append(reinterpret_cast<const char*>(encoded.bytes), encoded.size);
  }
}

std::string ToUtf8(std::wstring_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  AppendUtf8(text, bytes);
  return bytes;
}

std::wstring FromUtf8(std::string_view bytes) {
  const auto is_ascii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
  const auto* const beyond = std::find_if_not(bytes.begin(), bytes.end(), is_ascii);
  std::wstring text(bytes.begin(), beyond);
  bytes.remove_prefix(text.size());
  text.reserve(text.size() + bytes.size());
  while (!bytes.empty()) {
    const Sequence sequence = ReadSequence(bytes);
    AppendWide(sequence.code_point, text);
    bytes.remove_prefix(sequence.length);
  }
  return text;
}

}  // namespace pxscheduler
