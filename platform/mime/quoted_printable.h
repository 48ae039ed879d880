#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "platform/mime/byte_buffer.h"
#include "platform/text_pieces.h"

namespace pxscheduler {

// Writes texts as UTF-8 in quoted-printable (RFC 2045 section 6.7), ready for the DATA phase of
// SMTP: no line over 76 characters, and a line that begins with a full stop has it doubled (RFC
// 5321 section 4.5.2). CR LF, LF and a lone CR are line breaks.
//
// Long constant pieces are encoded once. They begin on a line of their own, behind a soft line
// break, so that what stands before them changes nothing in them.
class QuotedPrintable {
 public:
  // Appends one text. The output must be at the start of a line; it ends where the text ends,
  // without a line break of its own.
  void Append(const TextPieces& text, ByteBuffer& out);

 private:
  class Encoder;
  // A constant piece as it is encoded at the start of a line.
  struct Prepared {
    std::wstring_view piece;
    ByteBuffer encoded;
    std::size_t column = 0;  // where it ends
  };

  const Prepared& Prepare(std::size_t index, std::wstring_view piece);

  std::vector<Prepared> prepared_;  // in the order of the last text
};

}  // namespace pxscheduler
