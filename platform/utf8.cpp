#include <cstddef>
#include <cstdint>

#include "platform/code_page.h"

namespace pxscheduler {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsSurrogate(char32_t code_point) { return code_point >= 0xD800 && code_point <= 0xDFFF; }

void AppendCodePoint(char32_t code_point, std::string& out) {
  const auto byte = [&](char32_t bits) {
    out += static_cast<char>(static_cast<unsigned char>(bits));
  };
  if (code_point > 0x10FFFF || IsSurrogate(code_point)) code_point = kReplacement;
  if (code_point < 0x80) {
    byte(code_point);
  } else if (code_point < 0x800) {
    byte(0xC0 | code_point >> 6);
    byte(0x80 | (code_point & 0x3F));
  } else if (code_point < 0x10000) {
    byte(0xE0 | code_point >> 12);
    byte(0x80 | (code_point >> 6 & 0x3F));
    byte(0x80 | (code_point & 0x3F));
  } else {
    byte(0xF0 | code_point >> 18);
    byte(0x80 | (code_point >> 12 & 0x3F));
    byte(0x80 | (code_point >> 6 & 0x3F));
    byte(0x80 | (code_point & 0x3F));
  }
}

void AppendWide(char32_t code_point, std::wstring& out) {
  if (sizeof(wchar_t) == 2 && code_point >= 0x10000) {
    out += static_cast<wchar_t>(0xD800 + ((code_point - 0x10000) >> 10));
    out += static_cast<wchar_t>(0xDC00 + ((code_point - 0x10000) & 0x3FF));
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
  if (length == 0) return {kReplacement, 1};
  char32_t code_point = lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const unsigned char lowest = i > 1 ? 0x80 : lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned char highest = i > 1 ? 0xBF : lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (i >= bytes.size() || at(i) < lowest || at(i) > highest) return {kReplacement, i};
    code_point = code_point << 6 | (at(i) & 0x3F);
  }
  return {code_point, length};
}

}  // namespace

void AppendUtf8(std::wstring_view text, std::string& out) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto code_point = static_cast<char32_t>(text[i]);
    if (sizeof(wchar_t) == 2 && code_point >= 0xD800 && code_point < 0xDC00 &&
        i + 1 < text.size() && (static_cast<char32_t>(text[i + 1]) & 0xFC00) == 0xDC00) {
      code_point =
          0x10000 + ((code_point - 0xD800) << 10) + (static_cast<char32_t>(text[++i]) - 0xDC00);
    }
    AppendCodePoint(code_point, out);
  }
}

std::string ToUtf8(std::wstring_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  AppendUtf8(text, bytes);
  return bytes;
}

std::wstring FromUtf8(std::string_view bytes) {
  std::wstring text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const Sequence sequence = ReadSequence(bytes);
    AppendWide(sequence.code_point, text);
    bytes.remove_prefix(sequence.length);
  }
  return text;
}

}  // namespace pxscheduler
