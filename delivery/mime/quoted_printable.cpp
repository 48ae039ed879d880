#include "delivery/mime/quoted_printable.h"

#include <algorithm>
#include <cstddef>

#include "delivery/mime/text_encoding.h"
#include "text/hexadecimal.h"
#include "text/utf8.h"

namespace pxscheduler {

namespace {

constexpr std::size_t kLongestContent = 75;  // 76 less the "=" of a soft line break
// More than one step of the encoder writes: a line of plain characters, or four bytes as "=XX",
// with a soft line break and a doubled full stop.
constexpr std::size_t kStepRoom = 128;
// A shorter constant text is encoded for each message rather than put behind a soft line break.
constexpr std::size_t kWorthNewLine = 100;

bool IsPlain(wchar_t unit) { return unit >= L' ' && unit <= L'~' && unit != L'='; }

// Copies the plain characters that the text begins with and returns how many.
std::size_t CopyPlain(std::wstring_view text, char* to) {
  std::size_t copied = 0;
  while (copied < text.size() && IsPlain(text[copied])) {
    to[copied] = static_cast<char>(text[copied]);
    ++copied;
  }
  return copied;
}

}  // namespace

// Encodes one text, part by part.
class QuotedPrintable::Encoder {
 public:
  explicit Encoder(ByteBuffer& out) : out_(out) {}

  void Encode(std::wstring_view text) {
    std::size_t position = 0;
    if (column_ > 0 && text.size() <= kLongestContent - column_) {
      // Most values are short and plain and continue the line.
      char* const end = out_.Room(kStepRoom);
      position = CopyPlain(text, end);
      out_.SetEnd(end + position);
      column_ += position;
    }
    while (position < text.size()) {
      cursor_ = out_.Room(kStepRoom);
      position = Step(text, position);
      out_.SetEnd(cursor_);
    }
  }

  void Put(const Constant& constant, std::string_view rest) {
    if (!constant.unencoded.empty()) {
      Encode(constant.unencoded);
      return;
    }
    cursor_ = out_.Room(2 * constant.line.size() + kStepRoom + rest.size());
    PutPlainLines(constant.line);
    if (!rest.empty()) {
      if (!constant.is_on_new_line)
        ProtectTrailingBlank();
      else if (column_ > 0)
        SoftBreak();
      cursor_ = std::copy(rest.begin(), rest.end(), cursor_);
      column_ = constant.column;
    }
    out_.SetEnd(cursor_);
  }

  void End() {
    cursor_ = out_.Room(kStepRoom);
    ProtectTrailingBlank();
    out_.SetEnd(cursor_);
  }

  std::size_t Column() const { return column_; }

 private:
  // Encodes what begins at `position` and returns where the next step begins.
  std::size_t Step(std::wstring_view text, std::size_t position) {
    const wchar_t unit = text[position];
    if (IsPlain(unit) || unit == L'\t') {
      if (column_ == kLongestContent) SoftBreak();
      return position + (unit == L'\t' ? PutTab() : PutPlain(text.substr(position)));
    }
    if (IsLineBreak(unit)) {
      HardBreak();
      return AfterLineBreak(text, position);
    }
    PutEncoded(EncodeUtf8(NextCodePoint(text, position)));
    return position;
  }

  // Copies the plain characters that the text begins with, no more than the line holds, and returns
  // how many.
  std::size_t PutPlain(std::wstring_view text) {
    if (column_ == 0 && text.front() == L'.') *cursor_++ = '.';
    const std::size_t size = CopyPlain(text.substr(0, kLongestContent - column_), cursor_);
    cursor_ += size;
    column_ += size;
    return size;
  }

  // Copies plain characters, over as many lines as they need.
  void PutPlainLines(std::string_view characters) {
    while (!characters.empty()) {
      if (column_ == kLongestContent) SoftBreak();
      if (column_ == 0 && characters.front() == '.') *cursor_++ = '.';
      const std::size_t size = std::min(characters.size(), kLongestContent - column_);
      cursor_ = std::copy_n(characters.data(), size, cursor_);
      column_ += size;
      characters.remove_prefix(size);
    }
  }

  std::size_t PutTab() {
    *cursor_++ = '\t';
    ++column_;
    return 1;
  }

  // The bytes of one character stay on one line.
  void PutEncoded(const Utf8Bytes& character) {
    if (column_ + 3 * character.size > kLongestContent) SoftBreak();
    for (std::size_t i = 0; i < character.size; ++i) PutHex(character.bytes[i]);
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
    cursor_ = std::copy(kLineBreak.begin(), kLineBreak.end(), cursor_);
    column_ = 0;
  }

  // A blank or tab at the end of a line may be lost on the way.
  void ProtectTrailingBlank() {
    if (column_ == 0 || (cursor_[-1] != ' ' && cursor_[-1] != '\t')) return;
    const auto blank = static_cast<unsigned char>(*--cursor_);
    --column_;
    if (column_ + 3 > kLongestContent + 1) SoftBreak();
    PutHex(blank);
  }

  ByteBuffer& out_;
  char* cursor_ = nullptr;
  std::size_t column_ = 0;
};

void QuotedPrintable::SetTemplate(const TextTemplate& text) {
  template_ = PreparedTemplate<Constant>(text, EncodeConstant);
}

void QuotedPrintable::Append(std::span<const std::wstring> values, ByteBuffer& out) const {
  Encoder encoder(out);
  template_.EncodeWith(values, encoder);
  encoder.End();
}

void QuotedPrintable::AppendText(std::wstring_view text, ByteBuffer& out) {
  Encoder encoder(out);
  encoder.Encode(text);
  encoder.End();
}

QuotedPrintable::Constant QuotedPrintable::EncodeConstant(std::wstring_view text) {
  Constant constant;
  const std::size_t line_end = std::min(text.find_first_of(L"\r\n"), text.size());
  const std::wstring_view line = text.substr(0, line_end);
  constant.is_on_new_line = !std::all_of(line.begin(), line.end(), IsPlain);
  if (constant.is_on_new_line && text.size() < kWorthNewLine) {
    constant.unencoded = text;
    return constant;
  }
  Encoder encoder(constant.rest);
  encoder.Encode(constant.is_on_new_line ? text : text.substr(line_end));
  constant.column = encoder.Column();
  if (!constant.is_on_new_line) constant.line.assign(line.begin(), line.end());
  return constant;
}

}  // namespace pxscheduler
