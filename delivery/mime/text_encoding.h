#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "text/text_template.h"

// What IdentityEncoding and QuotedPrintable share.

namespace pxscheduler {

// The line break of mail. In a text CR LF, LF and a lone CR are line breaks.
inline constexpr std::string_view kLineBreak = "\r\n";

inline bool IsLineBreak(wchar_t unit) { return unit == L'\n' || unit == L'\r'; }

// The position behind the line break at `position`, 0-based.
inline std::size_t AfterLineBreak(std::wstring_view text, std::size_t position) {
  const bool is_pair = text[position] == L'\r' && text.substr(position + 1).starts_with(L'\n');
  return position + (is_pair ? 2 : 1);
}

// A template whose constant texts are encoded once. `Encoded` is an encoded constant; its member
// `rest` is a ByteBuffer with everything from the first line break on.
template <typename Encoded>
class PreparedTemplate {
 public:
  PreparedTemplate() = default;
  // `encode` encodes a constant text.
  template <typename Encode>
  PreparedTemplate(const TextTemplate& text, const Encode& encode) : places_(text.places) {
    for (const std::wstring& constant : text.constants) {
      constants_.push_back({.encoded = encode(constant),
                            .is_empty = constant.empty(),
                            .begins_with_line_feed = constant.starts_with(L'\n'),
                            .ends_with_return = constant.ends_with(L'\r')});
    }
  }

  // Passes the filled template to an encoder: values to its Encode, constants and their rest to its
  // Put. Leaves out an LF whose CR ended the text before it.
  template <typename Encoder>
  void EncodeWith(std::span<const std::wstring> values, Encoder& encoder) const {
    bool is_after_return = false;
    for (std::size_t i = 0; i < constants_.size(); ++i) {
      if (i > 0) {
        const std::wstring_view value = values[places_[i - 1]];
        const bool completes_line_break = is_after_return && value.starts_with(L'\n');
        encoder.Encode(value.substr(completes_line_break ? 1 : 0));
        if (!value.empty()) is_after_return = value.ends_with(L'\r');
      }
      const Constant& constant = constants_[i];
      if (constant.is_empty) continue;
      const bool completes_line_break = is_after_return && constant.begins_with_line_feed;
      encoder.Put(constant.encoded, constant.encoded.rest.View().substr(
                                        completes_line_break ? kLineBreak.size() : 0));
      is_after_return = constant.ends_with_return;
    }
  }

 private:
  struct Constant {
    Encoded encoded;
    bool is_empty = false;
    bool begins_with_line_feed = false;
    bool ends_with_return = false;
  };

  std::vector<Constant> constants_;
  std::vector<std::size_t> places_;
};

}  // namespace pxscheduler
