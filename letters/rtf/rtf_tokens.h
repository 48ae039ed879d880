#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace pxscheduler {

// A token of an RTF file (RTF 1.9.1, "RTF syntax").
struct RtfToken {
  enum class Kind : std::uint8_t {
    kEnd,
    kGroupStart,
    kGroupEnd,
    kControlWord,    // text is the word without "\", value its number
    kControlSymbol,  // text is the one character after "\"
    kByte,           // \'hh, value is the byte
    kText,           // text is bytes as they stand, without line ends
    kBinary          // text is the bytes after \bin
  };

  Kind kind = Kind::kEnd;
  std::string_view text;
  std::optional<std::int32_t> value;
};

// Splits the bytes into tokens. Nothing is an error: a token that the end of the bytes cuts off is
// what there is of it.
class RtfTokens {
 public:
  explicit RtfTokens(std::string_view bytes) : bytes_(bytes) {}

  RtfToken Next();

 private:
  RtfToken ControlWord();
  RtfToken AfterBackslash();

  std::string_view bytes_;
  std::size_t at_ = 0;
};

}  // namespace pxscheduler
