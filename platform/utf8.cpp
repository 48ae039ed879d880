#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "platform/code_page.h"
#include "platform/utf16.h"
#include "platform/utf8_code_points.h"

namespace pxscheduler {
namespace {

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
