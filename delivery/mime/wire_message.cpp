#include "delivery/mime/wire_message.h"

#include <utility>

#include "delivery/mime/text_encoding.h"
#include "text/utf8.h"

namespace pxscheduler {

namespace {

// Undoes the dot-stuffing (RFC 5321 section 4.5.2).
std::string WithoutDoubledFullStops(std::string_view lines) {
  std::string text;
  text.reserve(lines.size());
  while (!lines.empty()) {
    lines.remove_prefix(lines.front() == '.' ? 1 : 0);
    const std::size_t line_break = lines.find(kLineBreak);
    const std::string_view line = lines.substr(
        0, line_break == std::string_view::npos ? line_break : line_break + kLineBreak.size());
    text += line;
    lines.remove_prefix(line.size());
  }
  return text;
}

}  // namespace

void WireMessage::Clear() {
  bytes.Clear();
  eight_bit_parts.clear();
  multiparts.clear();
}

void MakeSevenBit(WireMessage& message) {
  if (message.eight_bit_parts.empty()) return;
  for (const std::size_t encoding : message.multiparts) message.bytes.Overwrite(encoding, "7bit");
  const std::string_view bytes = message.bytes.View();
  ByteBuffer rewritten;
  std::size_t position = 0;
  for (const EightBitPart& part : message.eight_bit_parts) {
    rewritten.Append(bytes.substr(position, part.encoding - position));
    rewritten.Append("quoted-printable\r\n\r\n");
    const std::wstring text =
        FromUtf8(WithoutDoubledFullStops(bytes.substr(part.begin, part.end - part.begin)));
    QuotedPrintable::AppendText(text, rewritten);
    position = part.end;
  }
  rewritten.Append(bytes.substr(position));
  message.bytes = std::move(rewritten);
  message.eight_bit_parts.clear();
}

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
