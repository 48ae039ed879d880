#pragma once

#include <string_view>

namespace pxscheduler {

// Compares as SQL Server's usual collation does: without letter case and without regard to blanks
// at the end, by code point of the lower-case letters otherwise. Negative, 0 or positive. Texts are
// UTF-8.
int CompareSqlText(std::string_view left, std::string_view right);

// LIKE with the same letters: "%" is any text, "_" any character, "[a-c]" and "[^a-c]" one of a
// set. `escape`, where it is not 0, makes the character after it stand for itself.
bool MatchesSqlPattern(std::wstring_view text, std::wstring_view pattern, wchar_t escape);

}  // namespace pxscheduler
