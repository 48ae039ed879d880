#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "delivery/mime/line_breaks.h"
#include "text/text_pieces.h"

namespace pxscheduler {

// What was made of the constant pieces of a text, kept from one message to the next. A piece is
// known by its place and size alone. `Prepared` has the piece in its member `piece`, and in `rest`
// what was made of it from its first line break on.
template <typename Prepared>
class PreparedPieces {
 public:
  // Hands each piece to the encoder: to its Encode, or, where it is constant, what `prepare` made
  // of it to its Put, with the rest. The LF of a line break whose CR ended the piece before is left
  // out.
  template <typename Prepare, typename Encoder>
  void EncodeEach(const TextPieces& text, const Prepare& prepare, Encoder& encoder) {
    std::size_t constants = 0;
    bool is_after_return = false;
    for (const TextPiece& piece : text) {
      if (piece.text.empty()) continue;
      const bool completes_line_break = is_after_return && piece.text.starts_with(L'\n');
      if (piece.is_constant) {
        const Prepared& constant = At(constants++, piece.text, prepare);
        encoder.Put(constant,
                    constant.rest.View().substr(completes_line_break ? kLineBreak.size() : 0));
      } else {
        encoder.Encode(piece.text.substr(completes_line_break ? 1 : 0));
      }
      is_after_return = piece.text.ends_with(L'\r');
    }
  }

 private:
  template <typename Prepare>
  const Prepared& At(std::size_t index, std::wstring_view piece, const Prepare& prepare) {
    if (index == prepared_.size()) prepared_.emplace_back();
    Prepared& prepared = prepared_[index];
    if (prepared.piece.data() != piece.data() || prepared.piece.size() != piece.size())
      prepared = prepare(piece);
    return prepared;
  }

  std::vector<Prepared> prepared_;  // in the order of the last text
};

}  // namespace pxscheduler
