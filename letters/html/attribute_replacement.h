#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace pxscheduler {

// Replaces the value of each attribute by what `replace` returns for the tag's name, the
// attribute's name (both in lower case) and the value as it stands between its quotation marks. ""
// leaves the value as it is. Nothing else of the document changes.
void ReplaceAttributes(
    std::wstring& html,
    const std::function<std::wstring(std::wstring_view tag, std::wstring_view attribute,
                                     std::wstring_view value)>& replace);

}  // namespace pxscheduler
