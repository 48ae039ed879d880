#pragma once

#include <string>
#include <string_view>

namespace pxscheduler {

// A readable plain rendering of an HTML document: paragraphs, underlined headings, lists, tables as
// aligned columns where they fit, links as their text and "<address>", pictures as their
// alternative text. Lines end in '\n' and are at most 72 characters long, except where a word or a
// bracketed token such as "[First Name]" is longer: neither is ever broken.
std::wstring PlainTextOfHtml(std::wstring_view html);

}  // namespace pxscheduler
