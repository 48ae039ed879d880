#pragma once

#include <string>
#include <string_view>

namespace pxscheduler {

// Letter by letter (Unicode simple case mapping), so the result has the length of the argument.
std::wstring UpperCase(std::wstring_view text);
std::wstring LowerCase(std::wstring_view text);

}  // namespace pxscheduler
