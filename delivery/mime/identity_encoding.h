#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "delivery/mime/byte_buffer.h"
#include "delivery/mime/text_encoding.h"
#include "text/text_template.h"

namespace pxscheduler {

// The transfer encoding that a text needs (RFC 2045 section 6.2).
enum class TransferEncoding { kSevenBit, kEightBit, kQuotedPrintable };

// Writes texts as UTF-8 and otherwise as they are, ready for the DATA phase of SMTP: doubles a full
// stop at the start of a line (RFC 5321 section 4.5.2). CR LF, LF and a lone CR are line breaks.
// The constant texts of a template are encoded once and then copied.
class IdentityEncoding {
 public:
  void SetTemplate(const TextTemplate& text);

  // Appends the template with the values in its places, or another text. The output must be at the
  // start of a line; no line break is added at the end. Returns kQuotedPrintable for a text that
  // cannot be sent as it is: with a control character other than tabs and line breaks, with a line
  // over 900 bytes, or with a line that begins with "--=_", as boundaries do. The caller then
  // discards what was appended.
  TransferEncoding Append(std::span<const std::wstring> values, ByteBuffer& out) const;
  static TransferEncoding AppendText(std::wstring_view text, ByteBuffer& out);

 private:
  class Encoder;
  struct Constant {
    std::string line;                // before the first line break
    ByteBuffer rest;                 // from the line break on
    std::size_t line_size = 0;       // bytes of the line on which the rest ends
    std::size_t boundary_match = 0;  // characters that this line has in common with a boundary
    bool is_eight_bit = false;
    bool fits = true;  // can be sent as it is, unless its first line does not fit where it stands
  };

  static Constant EncodeConstant(std::wstring_view text);

  PreparedTemplate<Constant> template_;
};

}  // namespace pxscheduler
