#pragma once

#include <cstddef>
#include <string_view>

#include "delivery/mime/byte_buffer.h"

namespace pxscheduler {

// The text of a header field as RFC 5322 and RFC 2047 write it. Line breaks and other control
// characters become blanks; blanks around the text do not count. `column` is how many characters of
// the line are written already. Lines are folded at 78 characters where the text allows it, and
// text that is not plain ASCII, looks like an encoded word or cannot be folded goes out as encoded
// words of UTF-8.

// The value of an unstructured field, such as a subject.
void AppendUnstructured(std::wstring_view text, std::size_t column, ByteBuffer& out);

// A display name and the mailbox that it belongs to: "Ann Smith <ann@example.com>". A blank name
// gives the address alone.
void AppendMailbox(std::wstring_view name, std::string_view address, std::size_t column,
                   ByteBuffer& out);

}  // namespace pxscheduler
