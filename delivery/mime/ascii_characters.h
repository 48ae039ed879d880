#pragma once

#include <concepts>
#include <string_view>

#include "text/ascii_case.h"

namespace pxscheduler {

template <std::integral Character>
constexpr bool IsAsciiAlphanumeric(Character character) {
  return IsAsciiLetter(character) || (character >= '0' && character <= '9');
}

// RFC 5322 section 3.2.3, "atext".
template <std::integral Character>
constexpr bool IsAtomCharacter(Character character) {
  return IsAsciiAlphanumeric(character) ||
         (character > 0 && character < 0x7F &&
          std::string_view("!#$%&'*+-/=?^_`{|}~").find(static_cast<char>(character)) !=
              std::string_view::npos);
}

}  // namespace pxscheduler
