#pragma once

#include <cstdint>
#include <string_view>

namespace pxscheduler {

// How wide a character is, as far as can be told without its font, in hundredths of its size.
std::int64_t RoughWidth(wchar_t character);

// How wide a text of a size in half points is, in twips.
std::int64_t RoughWidth(std::wstring_view text, std::uint16_t half_points);

}  // namespace pxscheduler
