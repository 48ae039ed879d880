#include "delivery/mime/text_part.h"

#include <cstddef>

namespace pxscheduler {

void TextPart::Append(const TextPieces& text, WireMessage& message) {
  ByteBuffer& bytes = message.bytes;
  const std::size_t encoding = bytes.View().size();
  bytes.Append("8bit\r\n\r\n");
  const std::size_t begin = bytes.View().size();
  const TransferEncoding needed = identity_.Append(text, bytes);
  if (needed == TransferEncoding::kSevenBit) {
    bytes.Overwrite(encoding, "7bit");
  } else if (needed == TransferEncoding::kEightBit && may_be_eight_bit_) {
    message.eight_bit_parts.push_back(
        {.encoding = encoding, .begin = begin, .end = bytes.View().size()});
  } else {
    bytes.Truncate(encoding);
    bytes.Append("quoted-printable\r\n\r\n");
    quoted_printable_.Append(text, bytes);
  }
}

}  // namespace pxscheduler
