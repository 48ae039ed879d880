#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace pxscheduler {

// Calls `replace` with the tag's name, the attribute's name (both in lower case) and the value, as
// it stands between its quotation marks, of each attribute of the document, and puts what it
// returns in the value's place; nothing else of the document changes. "" leaves the value as it is.
void ReplaceAttributes(
    std::wstring& html,
    const std::function<std::wstring(std::wstring_view tag, std::wstring_view attribute,
                                     std::wstring_view value)>& replace);

}  // namespace pxscheduler
