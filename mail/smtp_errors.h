#pragma once

#include <cstdint>
#include <string_view>

namespace pxscheduler {

// What a send's result code says in words, on one line; "" for a code without a text.
std::wstring_view SmtpErrorText(std::int16_t code);

}  // namespace pxscheduler
