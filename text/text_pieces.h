#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace pxscheduler {

// A part of a text that is put together anew for each message.
struct TextPiece {
  std::wstring_view text;
  // Whether these very characters, where they stand, come in many messages, so that what is made of
  // them once serves again.
  bool is_constant = false;
};

// The parts of one text, in their order, none of which ends inside a character. They are borrowed,
// and constant ones stay where and as they are: no other text may ever take their place while what
// was made of them is kept.
using TextPieces = std::vector<TextPiece>;

// The text itself.
std::wstring Joined(const TextPieces& pieces);

}  // namespace pxscheduler
