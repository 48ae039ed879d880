#pragma once

#include <string>

#include "letters/rtf/document.h"

namespace pxscheduler {

// The start of an HTML file whose body has the page's width and margins, up to and including the
// body's start tag. `body_style` is more declarations for the body, or "".
std::string HtmlStart(const PageLayout& page, const std::string& body_style);
std::string HtmlEnd();

// The rule that prints a page as the word processor would: "@page{...}".
std::string PageRule(const PageLayout& page);

}  // namespace pxscheduler
