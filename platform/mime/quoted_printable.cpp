#include "platform/mime/quoted_printable.h"

#include <cstddef>
#include <cstdint>

#include "platform/hexadecimal.h"
#include "platform/utf8_code_points.h"

namespace pxscheduler {

namespace {

constexpr std::size_t kLongestContent = 75;  // 76 less the "=" of a soft line break
constexpr std::size_t kBlock = 16;
// What one step of the encoder can write at most: a block, or four bytes, each as "=XX", with a
// soft line break and a doubled full stop.
constexpr std::size_t kStepRoom = 64;

bool IsPlain(wchar_t unit) {
  return static_cast<std::uint32_t>(unit) - 0x20U <= 0x7EU - 0x20U && unit != L'=';
}

// Whether a whole block is copied as it stands. Without a branch, so that it compiles to a few
// vector instructions.
bool IsPlainBlock(const wchar_t* units) {
  std::uint32_t special = 0;
  for (std::size_t i = 0; i < kBlock; ++i) {
    const char32_t code{static_cast<char32_t>(units[i])};
    special |= static_cast<std::uint32_t>(code - 0x20U > 0x7EU - 0x20U) |
               static_cast<std::uint32_t>(units[i] == L'=');
  }
  return special == 0;
}

class Encoder {
 public:
  explicit Encoder(ByteBuffer& out) : out_(out) {}

  void Encode(std::wstring_view text) {
    std::size_t position = 0;
    while (position < text.size()) {
      cursor_ = out_.Room(kStepRoom);
      position = Step(text, position);
      out_.SetEnd(cursor_);
    }
    cursor_ = out_.Room(kStepRoom);
    ProtectTrailingBlank();
    out_.SetEnd(cursor_);
  }

 private:
  // Encodes what begins at `position` and returns where the next step begins.
  std::size_t Step(std::wstring_view text, std::size_t position) {
    const wchar_t unit = text[position];
    if (column_ + kBlock <= kLongestContent && text.size() - position >= kBlock && unit != L'.' &&
        IsPlainBlock(text.data() + position)) {
      for (std::size_t i = 0; i < kBlock; ++i) {
        cursor_[i] = static_cast<char>(text[position + i]);
      }
      cursor_ += kBlock;
      column_ += kBlock;
      return position + kBlock;
    }
    if (IsPlain(unit) || unit == L'\t') {
      PutPlain(static_cast<char>(unit));
      return position + 1;
    }
    if (unit == L'\n' || unit == L'\r') {
      HardBreak();
      const bool pair = unit == L'\r' && position + 1 < text.size() && text[position + 1] == L'\n';
      return position + (pair ? 2 : 1);
    }
    PutEncoded(EncodeUtf8(NextCodePoint(text, position)));
    return position;
  }

  void PutPlain(char character) {
    if (column_ == kLongestContent) {
      SoftBreak();
    }
    if (column_ == 0 && character == '.') {
      *cursor_++ = '.';
    }
    *cursor_++ = character;
    ++column_;
  }

  // The bytes of one character stay on one line.
  void PutEncoded(const Utf8Bytes& character) {
    if (column_ + 3 * character.size > kLongestContent) {
      SoftBreak();
    }
    for (std::size_t i = 0; i < character.size; ++i) {
      PutHex(character.bytes[i]);
    }
  }

  void PutHex(unsigned char byte) {
    *cursor_++ = '=';
    *cursor_++ = kCapitalHexDigits[byte >> 4];
    *cursor_++ = kCapitalHexDigits[byte & 0xF];
    column_ += 3;
  }

  void SoftBreak() {
    *cursor_++ = '=';
    EndLine();
  }

  void HardBreak() {
    ProtectTrailingBlank();
    EndLine();
  }

  void EndLine() {
    *cursor_++ = '\r';
    *cursor_++ = '\n';
    column_ = 0;
  }

  // A blank or tab at the end of a line may be lost on the way.
  void ProtectTrailingBlank() {
    if (column_ == 0 || (cursor_[-1] != ' ' && cursor_[-1] != '\t')) {
      return;
    }
    const auto blank = static_cast<unsigned char>(*--cursor_);
    --column_;
    if (column_ + 3 > kLongestContent + 1) {
      SoftBreak();
    }
    PutHex(blank);
  }

  ByteBuffer& out_;
  char* cursor_ = nullptr;
  std::size_t column_ = 0;
};

}  // namespace

void AppendQuotedPrintable(std::wstring_view text, ByteBuffer& out) { Encoder(out).Encode(text); }

}  // namespace pxscheduler
