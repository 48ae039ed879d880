#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "data/odbc/odbc_headers.h"
#include "text/utf8.h"

namespace pxscheduler {

// The driver manager's wide text is UTF-16 whatever the width of wchar_t. Lone surrogates become
// U+FFFD in both directions.
std::vector<SQLWCHAR> ToDriverText(std::wstring_view text);  // with a terminating zero
std::wstring FromDriverText(std::span<const SQLWCHAR> text);
// Replaces `out` by the text in UTF-8.
void ToUtf8(std::span<const SQLWCHAR> text, std::string& out);

}  // namespace pxscheduler
