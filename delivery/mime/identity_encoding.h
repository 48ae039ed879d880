#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "delivery/mime/byte_buffer.h"
#include "delivery/mime/prepared_pieces.h"
#include "text/text_pieces.h"

namespace pxscheduler {

// What a text needs on its way (RFC 2045 section 6.2).
enum class TransferEncoding { kSevenBit, kEightBit, kQuotedPrintable };

// Writes texts as UTF-8 and otherwise as they are, ready for the DATA phase of SMTP: a line that
// begins with a full stop has it doubled (RFC 5321 section 4.5.2). CR LF, LF and a lone CR are line
// breaks.
//
// Constant pieces are encoded once, and copied from then on.
class IdentityEncoding {
 public:
  // Appends one text. The output must be at the start of a line; it ends where the text ends,
  // without a line break of its own. Returns kQuotedPrintable for a text that cannot travel as it
  // is: one with control characters (but tabs and line breaks), with a line over 900 bytes, or with
  // a line that begins like a boundary that begins with "=_". What was appended is then of no use.
  TransferEncoding Append(const TextPieces& text, ByteBuffer& out);

 private:
  class Encoder;
  struct Prepared {
    std::wstring_view piece;
    std::string line;                // before its first line break
    ByteBuffer rest;                 // from the line break on
    std::size_t line_size = 0;       // bytes of the line on which the rest ends
    std::size_t boundary_match = 0;  // how many characters it begins with as a boundary does
    bool is_eight_bit = false;
    bool fits = true;  // whether it can travel as it is; its first line is judged where it stands
  };

  static Prepared Prepare(std::wstring_view piece);

  PreparedPieces<Prepared> prepared_;
};

}  // namespace pxscheduler
