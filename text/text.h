#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace pxscheduler {

// The text without its leading and trailing blanks (U+0020 alone). A view into `text`.
std::wstring_view TrimBlanks(std::wstring_view text);

// The text with every occurrence of `find` replaced, left to right, without looking at what was
// just inserted. Unchanged when `find` does not occur or is empty.
std::wstring ReplaceAll(std::wstring_view text, std::wstring_view find,
                        std::wstring_view replacement);

// Appends the number in decimal digits, with zeros in front where it has fewer than `least_digits`
// (1 to 19).
void AppendWholeNumber(std::int64_t number, std::wstring& text, std::size_t least_digits = 1);

// Whether the text contains both tags of an HTML document, "<html>" and "</html>", in any case.
bool IsHtmlDocument(std::wstring_view text);

}  // namespace pxscheduler
