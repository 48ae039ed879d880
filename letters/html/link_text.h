#pragma once

#include <string>
#include <string_view>

namespace pxscheduler {

// What a reader can use of a link's address: "" for a script or a place in the same document.
std::wstring ReadableAddress(std::wstring_view address);

// Whether the link's text says its address already.
bool NamesAddress(std::wstring_view text, std::wstring_view address);

// Without blanks and line ends around it.
std::wstring Trimmed(std::wstring_view text);

// With small ASCII letters for capital ones.
std::wstring Lowered(std::wstring_view text);

}  // namespace pxscheduler
