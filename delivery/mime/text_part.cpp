#include "delivery/mime/text_part.h"

#include <cstddef>

namespace pxscheduler {

void TextPart::SetTemplate(const TextTemplate& text) {
  identity_.SetTemplate(text);
  quoted_printable_.SetTemplate(text);
}

void TextPart::Append(std::span<const std::wstring> values, WireMessage& message) const {
  Append([&](ByteBuffer& bytes) { return identity_.Append(values, bytes); },
         [&](ByteBuffer& bytes) { quoted_printable_.Append(values, bytes); }, message);
}

void TextPart::AppendText(std::wstring_view text, WireMessage& message) const {
  Append([&](ByteBuffer& bytes) { return IdentityEncoding::AppendText(text, bytes); },
         [&](ByteBuffer& bytes) { QuotedPrintable::AppendText(text, bytes); }, message);
}

template <typename AsItIs, typename InQuotedPrintable>
void TextPart::Append(const AsItIs& as_it_is, const InQuotedPrintable& in_quoted_printable,
                      WireMessage& message) const {
  ByteBuffer& bytes = message.bytes;
  const std::size_t encoding = bytes.View().size();
  bytes.Append("8bit\r\n\r\n");
  const std::size_t begin = bytes.View().size();
  const TransferEncoding needed = as_it_is(bytes);
  if (needed == TransferEncoding::kSevenBit) {
    bytes.Overwrite(encoding, "7bit");
  } else if (needed == TransferEncoding::kEightBit && may_be_eight_bit_) {
    message.eight_bit_parts.push_back(
        {.encoding = encoding, .begin = begin, .end = bytes.View().size()});
  } else {
    bytes.Truncate(encoding);
    bytes.Append("quoted-printable\r\n\r\n");
    in_quoted_printable(bytes);
  }
}

}  // namespace pxscheduler
