#pragma once

#include <string>

#include "letters/rtf/document.h"

namespace pxscheduler {

// The document as one HTML file (UTF-8) for mail programs: styles stand on the elements, pictures
// are data: URIs (RFC 2397), notes follow the text.
std::string WriteHtml(const Document& document, const PageLayout& page);

}  // namespace pxscheduler
