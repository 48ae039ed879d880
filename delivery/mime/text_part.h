#pragma once

#include <span>
#include <string>
#include <string_view>

#include "delivery/mime/identity_encoding.h"
#include "delivery/mime/quoted_printable.h"
#include "delivery/mime/wire_message.h"
#include "text/text_template.h"

namespace pxscheduler {

// Writes the same text part of each message, as it is where that can be and in quoted-printable
// where it cannot.
class TextPart {
 public:
  // Whether a text that is not all ASCII may go out as it is, which is so from the start.
  void SetEightBit(bool is_allowed) { may_be_eight_bit_ = is_allowed; }

  void SetTemplate(const TextTemplate& text);

  // Appends the template with the values in its places, or a text of its own. `message` ends with
  // what stands before the encoding's name in the last field of the part's head; the text follows,
  // without a line break of its own at its end.
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
