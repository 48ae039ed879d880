#pragma once

#include <string>
#include <string_view>

namespace pxscheduler {

// A link's address as plain text shows it, without "mailto:". "" for a script or a place in the
// same document, which are of no use there.
std::wstring ReadableAddress(std::wstring_view address);

// Whether the link's text, but for the scheme and white space around it, is its address.
bool NamesAddress(std::wstring_view text, std::wstring_view address);

}  // namespace pxscheduler
