#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "delivery/mime/byte_buffer.h"
#include "delivery/mime/identity_encoding.h"
#include "delivery/mime/quoted_printable.h"
#include "text/text_template.h"

namespace pxscheduler {

// A text part whose bytes are not all ASCII. Positions are 0-based, in the bytes of the message.
struct EightBitPart {
  std::size_t encoding;  // of "8bit", with which the header of the part ends
  std::size_t begin;     // of the text
  std::size_t end;
};

// A whole message, ready for the DATA phase of SMTP: full stops doubled, the final full stop
// included.
struct WireMessage {
  ByteBuffer bytes;
  std::vector<EightBitPart> eight_bit_parts;  // in their order; with any the server needs 8BITMIME
  std::vector<std::size_t> multiparts;        // where each names its transfer encoding

  void Clear();
};

// Makes the message fit for a server without 8BITMIME: encodes the parts that are not all ASCII in
// quoted-printable (RFC 6152 section 3). Where memory runs out the message is not usable any more.
void MakeSevenBit(WireMessage& message);

// Appends the same text part to each message: as it is where that is possible, otherwise in
// quoted-printable.
class TextPart {
 public:
  // Whether a text that is not all ASCII may go out as it is; true at first.
  void SetEightBit(bool is_allowed) { may_be_eight_bit_ = is_allowed; }

  void SetTemplate(const TextTemplate& text);

  // Appends the template with the values in its places, or another text. `message` ends just before
  // the name of the encoding, the last thing in the header of the part. Adds no line break at the
  // end.
  void Append(std::span<const std::wstring> values, WireMessage& message) const;
  void AppendText(std::wstring_view text, WireMessage& message) const;

 private:
  template <typename AsItIs, typename InQuotedPrintable>
  void Append(const AsItIs& as_it_is, const InQuotedPrintable& in_quoted_printable,
              WireMessage& message) const;

  bool may_be_eight_bit_ = true;
  IdentityEncoding identity_;
  QuotedPrintable quoted_printable_;
};

}  // namespace pxscheduler
