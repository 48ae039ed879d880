#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pxscheduler {

// RFC 4648 section 4, on one line.
std::string EncodeBase64(std::string_view bytes);

// Nothing for a text that is not base64 with its padding.
std::optional<std::string> DecodeBase64(std::string_view text);

}  // namespace pxscheduler
