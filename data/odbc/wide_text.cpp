#include "data/odbc/wide_text.h"

#include "text/utf16.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

// Takes the next character off `text`, which is not empty.
char32_t NextCharacter(std::span<const SQLWCHAR>& text) {
  const char32_t unit = text.front();
  text = text.subspan(1);
  if (!IsSurrogate(unit)) return unit;
  if (!IsHighSurrogate(unit) || text.empty() || !IsLowSurrogate(text.front()))
    return kReplacementCharacter;
  const char32_t low = text.front();
  text = text.subspan(1);
  return JoinSurrogates(unit, low);
}

}  // namespace

std::vector<SQLWCHAR> ToDriverText(std::wstring_view text) {
  std::vector<SQLWCHAR> units;
  units.reserve(text.size() + 1);
  for (std::size_t position = 0; position < text.size();) {
    const char32_t character = NextCodePoint(text, position);
    if (character > 0xFFFF) {
      units.push_back(static_cast<SQLWCHAR>(HighSurrogate(character)));
      units.push_back(static_cast<SQLWCHAR>(LowSurrogate(character)));
    } else {
      units.push_back(static_cast<SQLWCHAR>(character));
    }
  }
  units.push_back(0);
  return units;
}

std::wstring FromDriverText(std::span<const SQLWCHAR> text) {
  std::string utf8;
  ToUtf8(text, utf8);
  return FromUtf8(utf8);
}

void ToUtf8(std::span<const SQLWCHAR> text, std::string& out) {
  // Three bytes hold what one unit stands for; the four of a pair stand for two.
  out.resize(text.size() * 3);
  char* to = out.data();
  while (!text.empty()) {
    if (text.front() < 0x80) {
      *to++ = static_cast<char>(text.front());
      text = text.subspan(1);
      continue;
    }
    const char32_t character = NextCharacter(text);
    const auto continuation = [character](int shift) {
      return static_cast<char>(0x80 | ((character >> shift) & 0x3F));
    };
    if (character < 0x800) {
      *to++ = static_cast<char>(0xC0 | (character >> 6));
    } else if (character < 0x10000) {
      *to++ = static_cast<char>(0xE0 | (character >> 12));
      *to++ = continuation(6);
    } else {
      *to++ = static_cast<char>(0xF0 | (character >> 18));
      *to++ = continuation(12);
      *to++ = continuation(6);
    }
    *to++ = continuation(0);
  }
  out.resize(static_cast<std::size_t>(to - out.data()));
}

}  // namespace pxscheduler
