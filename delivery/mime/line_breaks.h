#pragma once

#include <cstddef>
#include <string_view>

namespace pxscheduler {

// What mail ends a line with. In a text CR LF, LF and a lone CR are line breaks.
inline constexpr std::string_view kLineBreak = "\r\n";

inline bool IsLineBreak(wchar_t unit) { return unit == L'\n' || unit == L'\r'; }

// Where the text goes on behind the line break at `position`, 0-based.
inline std::size_t AfterLineBreak(std::wstring_view text, std::size_t position) {
  const bool is_pair = text[position] == L'\r' && text.substr(position + 1).starts_with(L'\n');
  return position + (is_pair ? 2 : 1);
}

}  // namespace pxscheduler
