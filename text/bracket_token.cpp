#include "text/bracket_token.h"

#include <cwctype>

namespace pxscheduler {

std::size_t BracketTokenLength(std::wstring_view text) {
  constexpr std::size_t kLongest = 42;
  if (!text.starts_with(L'[')) return 0;
  for (std::size_t i = 1; i < text.size() && i < kLongest; ++i) {
    if (text[i] == L']') return i > 1 ? i + 1 : 0;
    const bool letter = text[i] >= 0x80 ? std::iswspace(static_cast<std::wint_t>(text[i])) == 0
                                        : std::iswalnum(static_cast<std::wint_t>(text[i])) != 0;
    if (!letter && text[i] != L' ') return 0;
  }
  return 0;
}

}  // namespace pxscheduler
