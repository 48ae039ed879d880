#pragma once

#include <cstddef>
#include <vector>

#include "delivery/mime/byte_buffer.h"

namespace pxscheduler {

// A text part whose bytes are not all ASCII. Positions are 0-based, in the bytes of the message.
struct EightBitPart {
  std::size_t encoding;  // of "8bit", with which the head of the part ends
  std::size_t begin;     // of the text
  std::size_t end;
};

// A whole message, ready for the DATA phase of SMTP: full stops doubled, the final full stop
// included.
struct WireMessage {
  ByteBuffer bytes;
  std::vector<EightBitPart> eight_bit_parts;  // in their order; with any the server needs 8BITMIME
  std::vector<std::size_t>
      multiparts;  // where each names its encoding; empty once MakeSevenBit did

  void Clear();
};

// Rewrites the message for a server without 8BITMIME: parts that are not all ASCII become
// quoted-printable (RFC 6152 section 3). Where memory does not suffice, the message is of no more
// use.
void MakeSevenBit(WireMessage& message);

}  // namespace pxscheduler
