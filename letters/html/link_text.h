#pragma once

#include <string>
#include <string_view>

namespace pxscheduler {

// What a reader can use of a link's address: "" for a script or a place in the same document.
std::wstring ReadableAddress(std::wstring_view address);

// Whether the link's text, but for the scheme and white space around it, is its address.
bool NamesAddress(std::wstring_view text, std::wstring_view address);

}  // namespace pxscheduler
