#pragma once

#include <string>
#include <string_view>

namespace pxscheduler {

// RFC 4648, with padding, on one line.
std::string Base64(std::string_view bytes);

}  // namespace pxscheduler
