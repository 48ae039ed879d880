#include "text/base64.h"

#include <cstdint>

namespace pxscheduler {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string EncodeBase64(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::string_view group = bytes.substr(i, 3);
    std::uint32_t bits = 0;
    for (std::size_t k = 0; k < 3; ++k)
      bits = bits << 8 | (k < group.size() ? static_cast<unsigned char>(group[k]) : 0U);
    for (std::size_t k = 0; k < 4; ++k)
      text += k <= group.size() ? kAlphabet[bits >> (18 - 6 * k) & 0x3F] : '=';
  }
  return text;
}

std::optional<std::string> DecodeBase64(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  for (std::size_t i = 0; i < text.size(); i += 4) {
    std::string_view group = text.substr(i, 4);
    if (i + 4 == text.size())
      group = group.substr(0, group.ends_with("==") ? 2 : group.ends_with('=') ? 3 : 4);
    std::uint32_t bits = 0;
    for (std::size_t k = 0; k < 4; ++k) {
      const std::size_t digit = k < group.size() ? kAlphabet.find(group[k]) : 0;
      if (digit == std::string_view::npos) return std::nullopt;
      bits = bits << 6 | static_cast<std::uint32_t>(digit);
    }
    for (std::size_t k = 0; k + 1 < group.size(); ++k)
      bytes += static_cast<char>(bits >> (16 - 8 * k) & 0xFF);
  }
  return bytes;
}

}  // namespace pxscheduler
