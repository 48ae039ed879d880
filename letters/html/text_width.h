#pragma once

#include <cstdint>
#include <string_view>

namespace pxscheduler {

// The width of a character, estimated without its font, in hundredths of its size.
std::int64_t RoughWidth(wchar_t character);

// The same of a text, in twips.
std::int64_t RoughWidth(std::wstring_view text, std::uint16_t half_points);

}  // namespace pxscheduler
