#pragma once

#include <string>

namespace pxscheduler {

// The number of a list item as HTML's list types write it: '1' decimal, 'a' and 'A' letters, 'i'
// and 'I' Roman numerals; decimal where letters or numerals cannot write it, and for any other
// style.
std::wstring ListNumber(long number, wchar_t style);

}  // namespace pxscheduler
