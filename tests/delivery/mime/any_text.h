#pragma once

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include "text/text_pieces.h"
#include "text/utf8.h"

namespace pxscheduler {

inline std::wstring AnyText(std::size_t most, std::mt19937& random) {
  const std::wstring alphabet = L"abcdefghijklmnopqrstuvwxyz....==   \t\n\n\r<>&\u00e9\u20ac";
  std::wstring text;
  for (std::size_t i = random() % most; i > 0; --i) {
    const std::size_t letter = random() % (alphabet.size() + 1);
    // Two units on some machines, which no piece splits.
    text += letter < alphabet.size() ? std::wstring(1, alphabet[letter]) : L"\U0001F600";
  }
  return text;
}

// The same text of each message of a run: constant pieces, short and long, with a value behind
// each.
class AnyRun {
 public:
  explicit AnyRun(std::mt19937& random)
      : random_(random), constants_(random() % 5), values_(constants_.size()) {
    for (std::wstring& constant : constants_) constant = AnyText(300, random_);
  }

  // Good until the next.
  TextPieces NextMessage() {
    TextPieces pieces;
    for (std::size_t i = 0; i < constants_.size(); ++i) {
      values_[i] = AnyText(20, random_);
      pieces.push_back({constants_[i], true});
      pieces.push_back({values_[i], false});
    }
    return pieces;
  }

 private:
  std::mt19937& random_;
  std::vector<std::wstring> constants_;
  std::vector<std::wstring> values_;
};

// The text with each of its line breaks as LF.
inline std::string Lines(const std::wstring& text) {
  std::string lines = ToUtf8(text);
  for (std::size_t at = 0; (at = lines.find("\r\n", at)) != std::string::npos;) lines.erase(at, 1);
  std::replace(lines.begin(), lines.end(), '\r', '\n');
  return lines;
}

}  // namespace pxscheduler
