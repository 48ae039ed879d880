#include "delivery/mime/identity_encoding.h"

#include <algorithm>
#include <cstddef>

#include "delivery/mime/text_encoding.h"
#include "text/utf8.h"

namespace pxscheduler {

namespace {

// Bytes. 998 are allowed (RFC 5321 section 4.5.3.1.6), but some relays break lines from 990 on.
constexpr std::size_t kLongestLine = 900;
constexpr std::size_t kLongestRun = 128;
// The most that one step of the encoder writes: a run of characters and a doubled full stop.
constexpr std::size_t kRunRoom = kLongestRun + 1;
constexpr std::string_view kBoundaryLine = "--=_";

bool IsCopied(wchar_t unit) { return (unit >= L' ' && unit <= L'~') || unit == L'\t'; }
// Control characters, which some relays change.
bool MustBeQuoted(wchar_t unit) { return (unit < L' ' && unit != L'\t') || unit == 0x7F; }

}  // namespace

// Encodes one text, part by part.
class IdentityEncoding::Encoder {
 public:
  explicit Encoder(ByteBuffer& out) : out_(out) {}

  void Encode(std::wstring_view text) {
    GoOnWithLine(text);
    for (std::size_t position = 0; fits_ && position < text.size();) {
      cursor_ = out_.Room(kRunRoom);
      position = Step(text, position);
      out_.SetEnd(cursor_);
    }
  }

  void Put(const Constant& constant, std::string_view rest) {
    fits_ = fits_ && constant.fits;
    if (!fits_) return;
    cursor_ = out_.Room(constant.line.size() + rest.size() + 1);
    if (!constant.line.empty()) {
      if (line_size_ == 0)
        BeginLine(std::string_view(constant.line));
      else
        GoOnWithLine(std::string_view(constant.line));
      cursor_ = std::copy(constant.line.begin(), constant.line.end(), cursor_);
      line_size_ += constant.line.size();
    }
    if (!rest.empty()) {
      MeasureLine();
      cursor_ = std::copy(rest.begin(), rest.end(), cursor_);
      line_size_ = constant.line_size;
      boundary_match_ = constant.boundary_match;
    }
    out_.SetEnd(cursor_);
    is_eight_bit_ = is_eight_bit_ || constant.is_eight_bit;
  }

  TransferEncoding End() {
    MeasureLine();
    if (!fits_) return TransferEncoding::kQuotedPrintable;
    return is_eight_bit_ ? TransferEncoding::kEightBit : TransferEncoding::kSevenBit;
  }

  std::size_t LineSize() const { return line_size_; }
  std::size_t BoundaryMatch() const { return boundary_match_; }
  bool IsEightBit() const { return is_eight_bit_; }
  bool Fits() const { return fits_; }

 private:
  // Encodes what begins at `position` and returns where the next step begins.
  std::size_t Step(std::wstring_view text, std::size_t position) {
    const wchar_t unit = text[position];
    if (IsLineBreak(unit)) {
      EndLine();
      return AfterLineBreak(text, position);
    }
    if (line_size_ == 0) BeginLine(text.substr(position));
    if (IsCopied(unit)) return position + PutRun(text.substr(position, kLongestRun));
    fits_ = fits_ && !MustBeQuoted(unit);
    PutCharacter(EncodeUtf8(NextCodePoint(text, position)));
    return position;
  }

  // Copies the ASCII characters that the text begins with and returns how many.
  std::size_t PutRun(std::wstring_view text) {
    std::size_t size = 0;
    while (size < text.size() && IsCopied(text[size])) {
      cursor_[size] = static_cast<char>(text[size]);
      ++size;
    }
    cursor_ += size;
    line_size_ += size;
    return size;
  }

  void PutCharacter(const Utf8Bytes& character) {
    cursor_ = std::copy_n(character.bytes, character.size, cursor_);
    line_size_ += character.size;
    is_eight_bit_ = is_eight_bit_ || character.size > 1;
  }

  // `text` stands at the start of the line.
  template <typename View>
  void BeginLine(View text) {
    if (text.front() == '.') *cursor_++ = '.';
    boundary_match_ = 0;
    CompareWithBoundary(text);
  }

  // `text` stands next on the line.
  template <typename View>
  void GoOnWithLine(View text) {
    if (line_size_ > 0 && line_size_ == boundary_match_) CompareWithBoundary(text);
  }

  template <typename View>
  void CompareWithBoundary(View text) {
    while (!text.empty() && fits_ && text.front() == kBoundaryLine[boundary_match_]) {
      ++boundary_match_;
      text.remove_prefix(1);
      fits_ = boundary_match_ < kBoundaryLine.size();
    }
  }

  void EndLine() {
    MeasureLine();
    cursor_ = std::copy(kLineBreak.begin(), kLineBreak.end(), cursor_);
    line_size_ = 0;
  }

  void MeasureLine() { fits_ = fits_ && line_size_ <= kLongestLine; }

  ByteBuffer& out_;
  char* cursor_ = nullptr;
  std::size_t line_size_ = 0;       // bytes, without a doubled full stop
  std::size_t boundary_match_ = 0;  // characters that the line has in common with a boundary
  bool is_eight_bit_ = false;
  bool fits_ = true;
};

void IdentityEncoding::SetTemplate(const TextTemplate& text) {
  template_ = PreparedTemplate<Constant>(text, EncodeConstant);
}

TransferEncoding IdentityEncoding::Append(std::span<const std::wstring> values,
                                          ByteBuffer& out) const {
  Encoder encoder(out);
  template_.EncodeWith(values, encoder);
  return encoder.End();
}

TransferEncoding IdentityEncoding::AppendText(std::wstring_view text, ByteBuffer& out) {
  Encoder encoder(out);
  encoder.Encode(text);
  return encoder.End();
}

IdentityEncoding::Constant IdentityEncoding::EncodeConstant(std::wstring_view text) {
  Constant constant;
  const std::size_t line_end = std::min(text.find_first_of(L"\r\n"), text.size());
  const std::wstring_view line = text.substr(0, line_end);
  constant.line = ToUtf8(line);
  Encoder encoder(constant.rest);
  encoder.Encode(text.substr(line_end));
  constant.line_size = encoder.LineSize();
  constant.boundary_match = encoder.BoundaryMatch();
  constant.is_eight_bit = encoder.IsEightBit() || constant.line.size() != line.size();
  constant.fits = encoder.Fits() && std::none_of(line.begin(), line.end(), MustBeQuoted);
  return constant;
}

}  // namespace pxscheduler
