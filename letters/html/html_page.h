#pragma once

#include <string>

#include "letters/rtf/document.h"

namespace pxscheduler {

// The start of an HTML file whose body has the page's width and margins, up to and including the
// body's start tag. `body_style` is more declarations for the body, or "".
std::string HtmlStart(const PageLayout& page, const std::string& body_style);
std::string HtmlEnd();

// An HTML file in any encoding that extends ASCII, to be printed on this page unless it names a
// page itself. Its own layout stays. A fragment becomes a whole file.
std::string WithPageRule(const std::string& html, const PageLayout& page);

}  // namespace pxscheduler
