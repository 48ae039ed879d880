#pragma once

#include <string>
#include <string_view>

#include "letters/rtf/document.h"

namespace pxscheduler {

// Appends the text with what HTML marks escaped, fit for an attribute too.
void AppendEscaped(std::wstring_view text, std::string& html);

// Plain text as an HTML file (UTF-8) with this page. Each line is a paragraph.
std::string HtmlOfText(std::wstring_view text, const PageLayout& page);

}  // namespace pxscheduler
