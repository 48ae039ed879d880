#pragma once

#include <string_view>

#include "platform/mime/byte_buffer.h"

namespace pxscheduler {

// Appends the text as UTF-8 in quoted-printable (RFC 2045 section 6.7), ready for the DATA phase of
// SMTP: no line over 76 characters, and a line that begins with a full stop has it doubled (RFC
// 5321 section 4.5.2). CR LF, LF and a lone CR are line breaks. The output must begin at the start
// of a line; it ends where the text ends, without a line break of its own.
void AppendQuotedPrintable(std::wstring_view text, ByteBuffer& out);

}  // namespace pxscheduler
