#include "text/text_pieces.h"

namespace pxscheduler {

std::wstring Joined(const TextPieces& pieces) {
  std::wstring text;
  for (const TextPiece& piece : pieces) text += piece.text;
  return text;
}

}  // namespace pxscheduler
