#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "delivery/mime/byte_buffer.h"
#include "delivery/mime/text_encoding.h"
#include "text/text_template.h"

namespace pxscheduler {

// Writes texts as UTF-8 in quoted-printable (RFC 2045 section 6.7), ready for the DATA phase of
// SMTP: no line over 76 characters, and a full stop at the start of a line doubled (RFC 5321
// section 4.5.2). CR LF, LF and a lone CR are line breaks.
//
// The constant texts of a template are encoded once, except for their first line, which continues
// the line before it. Where that first line has other than plain characters, a soft line break
// separates a long text from what stands before it, and a short one is encoded for each message.
class QuotedPrintable {
 public:
  void SetTemplate(const TextTemplate& text);

  // Appends the template with the values in its places, or another text. The output must be at the
  // start of a line; no line break is added at the end.
  void Append(std::span<const std::wstring> values, ByteBuffer& out) const;
  static void AppendText(std::wstring_view text, ByteBuffer& out);

 private:
  class Encoder;
  struct Constant {
    std::wstring unencoded;       // a text that is encoded for each message; else:
    std::string line;             // the plain characters before the first line break
    bool is_on_new_line = false;  // the text stands behind a soft line break, without a `line`
    ByteBuffer rest;              // the text behind `line`, encoded
    std::size_t column = 0;       // where the rest ends
  };

  static Constant EncodeConstant(std::wstring_view text);

  PreparedTemplate<Constant> template_;
};

}  // namespace pxscheduler
