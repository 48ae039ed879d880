#include "letters/rtf/rtf_tokens.h"

#include <algorithm>

#include "text/ascii_case.h"
#include "text/hexadecimal.h"

namespace pxscheduler {
namespace {

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

}  // namespace

RtfToken RtfTokens::ControlWord() {
  RtfToken token{RtfToken::Kind::kControlWord, {}, std::nullopt};
  const std::size_t begin = at_;
  while (at_ < bytes_.size() && IsAsciiLetter(bytes_[at_])) ++at_;
  token.text = bytes_.substr(begin, at_ - begin);
  const bool negative = at_ + 1 < bytes_.size() && bytes_[at_] == '-' && IsDigit(bytes_[at_ + 1]);
  if (negative) ++at_;
  if (at_ < bytes_.size() && IsDigit(bytes_[at_])) {
    std::int64_t value = 0;
    for (; at_ < bytes_.size() && IsDigit(bytes_[at_]); ++at_)
      value = std::min<std::int64_t>(value * 10 + (bytes_[at_] - '0'), INT32_MAX);
    token.value = static_cast<std::int32_t>(negative ? -value : value);
  }
  if (at_ < bytes_.size() && bytes_[at_] == ' ') ++at_;
  if (token.text == "bin") {
    const auto length = static_cast<std::size_t>(std::max(0, token.value.value_or(0)));
    token.kind = RtfToken::Kind::kBinary;
    token.text = bytes_.substr(at_, length);
    at_ += token.text.size();
  }
  return token;
}

RtfToken RtfTokens::AfterBackslash() {
  if (at_ == bytes_.size()) return {};
  if (IsAsciiLetter(bytes_[at_])) return ControlWord();
  if (bytes_[at_] == '\'' && at_ + 2 < bytes_.size()) {
    const int high = HexDigitValue(bytes_[at_ + 1]);
    const int low = HexDigitValue(bytes_[at_ + 2]);
    if (high >= 0 && low >= 0) {
      at_ += 3;
      return {RtfToken::Kind::kByte, {}, high * 16 + low};
    }
  }
  return {RtfToken::Kind::kControlSymbol, bytes_.substr(at_++, 1), std::nullopt};
}

RtfToken RtfTokens::Next() {
  while (at_ < bytes_.size() && (bytes_[at_] == '\r' || bytes_[at_] == '\n')) ++at_;
  if (at_ == bytes_.size()) return {};
  switch (bytes_[at_]) {
    case '{':
      return {RtfToken::Kind::kGroupStart, bytes_.substr(at_++, 1), std::nullopt};
    case '}':
      return {RtfToken::Kind::kGroupEnd, bytes_.substr(at_++, 1), std::nullopt};
    case '\\':
      ++at_;
      return AfterBackslash();
    default:
      const std::size_t end = std::min(bytes_.find_first_of("{}\\\r\n", at_), bytes_.size());
      const std::string_view text = bytes_.substr(at_, end - at_);
      at_ = end;
      return {RtfToken::Kind::kText, text, std::nullopt};
  }
}

}  // namespace pxscheduler
