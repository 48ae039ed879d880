#pragma once

#include <string>
#include <string_view>

#include "platform/code_page.h"
#include "platform/regional.h"

namespace pxscheduler {

// A date, or a date with a time of day, in the locale's form as a quoted SQL literal:
// '2026-11-16' or '2026-11-16 15:30'. A text of more than 12 characters counts as holding a time.
// "Null", unquoted, for an empty text, ":", "Null" or a bare time of day. A text that is no date
// keeps its own words inside the quotation marks.
std::wstring FormatSqlDate(const Regional& regional, const CodePage& ansi,
                           const std::wstring& value);

// The text without every trailing repetition of the suffix, which must not be empty.
std::wstring StripTrailing(std::wstring text, std::wstring_view suffix);

}  // namespace pxscheduler
