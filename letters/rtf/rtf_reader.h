#pragma once

#include <string_view>

#include "letters/rtf/document.h"
#include "platform/code_page.h"

namespace pxscheduler {

// Reads a rich-text document (RTF 1.9.1) in time and memory in proportion to its length. Nothing in
// it is an error: what is malformed, unknown or cut off is passed over, and what is readable of the
// rest is read. Headers, footers and comments are left out.
Document ReadRtf(std::string_view bytes, const CodePages& code_pages);

}  // namespace pxscheduler
