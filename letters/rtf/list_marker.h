#pragma once

#include <string>
#include <string_view>

namespace pxscheduler {

// The number of a list item as HTML's list types write it: '1' decimal, 'a' and 'A' letters, 'i'
// and 'I' Roman numerals; decimal where letters or numerals cannot write it, and for any other
// style.
std::wstring ListNumber(long number, wchar_t style);

// The number that a marker such as "12." or "iv." shows, at most 3999 and a single letter; 0 for
// any other text.
long NumberOfMarker(std::wstring_view marker, wchar_t style);

}  // namespace pxscheduler
