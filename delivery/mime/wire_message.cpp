#include "delivery/mime/wire_message.h"

#include <string>
#include <string_view>
#include <utility>

#include "delivery/mime/quoted_printable.h"
#include "delivery/mime/text_encoding.h"
#include "text/utf8.h"

namespace pxscheduler {

namespace {

// What the server makes of the lines (RFC 5321 section 4.5.2).
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
  message.multiparts.clear();
}

}  // namespace pxscheduler
