#pragma once

#include <cstdint>
#include <string_view>

namespace pxscheduler {

// The text of a send's result code, on one line; "" for a code without one.
std::wstring_view SmtpErrorText(std::int16_t code);

}  // namespace pxscheduler
