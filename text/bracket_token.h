#pragma once

#include <cstddef>
#include <string_view>

namespace pxscheduler {

// The length of the bracketed token that the text begins with, for instance 12 for
// "[First Name], dear": a "[", up to forty letters, digits and single blanks, and a "]". 0 where
// the text begins with anything else. Mail merging looks for such tokens letter by letter, so
// nothing may come between their characters.
std::size_t BracketTokenLength(std::wstring_view text);

}  // namespace pxscheduler
