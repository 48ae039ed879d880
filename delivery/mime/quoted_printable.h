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
// SMTP: no line over 76 characters, and a line that begins with a full stop has it doubled (RFC
// 5321 section 4.5.2). CR LF, LF and a lone CR are line breaks.
//
// The constant texts of a template are encoded once, but for their first line, which goes on with
// what stands before it. Where that line is not all plain characters, a long text stands behind a
// soft line break instead, and a short one is encoded where it stands.
class QuotedPrintable {
 public:
  void SetTemplate(const TextTemplate& text);

  // Appends the template with the values in its places, or a text of its own. The output must be at
  // the start of a line; it ends where the text ends, without a line break of its own.
  void Append(std::span<const std::wstring> values, ByteBuffer& out) const;
  static void AppendText(std::wstring_view text, ByteBuffer& out);

 private:
  class Encoder;
  // A constant text. One that is encoded where it stands has neither a line nor a rest.
  struct Constant {
    std::wstring encoded_in_place;  // that text
    std::string line;               // the plain characters before its first line break
    bool is_cut_off = false;
    ByteBuffer rest;         // encoded from the line break on, or all of a text that is cut off
    std::size_t column = 0;  // where the rest ends
  };

  static Constant EncodeConstant(std::wstring_view text);

  PreparedTemplate<Constant> template_;
};

}  // namespace pxscheduler
