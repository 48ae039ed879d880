#include "platform/html/base64.h"

#include <cstddef>
#include <cstdint>

namespace pxscheduler {

std::string Base64(std::string_view bytes) {
  static constexpr std::string_view kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t j = 0; j < 3; ++j)
      group = group << 8 | (i + j < bytes.size() ? static_cast<unsigned char>(bytes[i + j]) : 0U);
    for (std::size_t j = 0; j < 4; ++j)
      text += i + j > bytes.size() ? '=' : kAlphabet[group >> (18 - 6 * j) & 0x3F];
  }
  return text;
}

}  // namespace pxscheduler
