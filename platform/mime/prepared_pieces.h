#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace pxscheduler {

// What was made of the constant pieces of a text, kept from one message to the next. A piece is
// known by its place and size alone. `Prepared` names the piece that it was made of in its member
// `piece`.
template <typename Prepared>
class PreparedPieces {
 public:
  // `index` counts the constant pieces of a text, 0 the first, and goes up by no more than one. The
  // result is valid until the next call.
  template <typename Prepare>
  const Prepared& At(std::size_t index, std::wstring_view piece, const Prepare& prepare) {
    if (index == prepared_.size()) {
      prepared_.emplace_back();
    }
    Prepared& prepared = prepared_[index];
    if (prepared.piece.data() != piece.data() || prepared.piece.size() != piece.size()) {
      prepared = prepare(piece);
    }
    return prepared;
  }

 private:
  std::vector<Prepared> prepared_;  // in the order of the last text
};

}  // namespace pxscheduler
