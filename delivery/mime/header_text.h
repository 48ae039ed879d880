#pragma once

#include <cstddef>
#include <string_view>

#include "delivery/mime/byte_buffer.h"

namespace pxscheduler {

// The text of a header field (RFC 5322, RFC 2047). Both functions turn line breaks and other
// control characters into blanks, drop blanks around the text, and fold lines at 78 characters. A
// text that is not printable ASCII, looks like an encoded word or cannot be folded becomes encoded
// words of UTF-8. `column` is the number of characters that the line already has.

// Appends the value of an unstructured field, such as a subject.
void AppendUnstructured(std::wstring_view text, std::size_t column, ByteBuffer& out);

// Appends a display name and its mailbox, "Ann Smith <ann@example.com>", or the address alone where
// the name is blank.
void AppendMailbox(std::wstring_view name, std::string_view address, std::size_t column,
                   ByteBuffer& out);

}  // namespace pxscheduler
