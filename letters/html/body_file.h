#pragma once

#include <string>
#include <string_view>

#include "platform/code_page.h"

namespace pxscheduler {

// The text of a body file: in the encoding of its byte order mark (which is dropped), else in the
// one that an HTML document declares ("<meta charset=...>" or its http-equiv form, or an XML
// declaration), else in the ANSI code page. An encoding that the machine does not know counts as
// not declared.
std::wstring DecodeBodyFile(std::string_view bytes, const CodePages& code_pages);

}  // namespace pxscheduler
