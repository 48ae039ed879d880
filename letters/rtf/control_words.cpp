#include "letters/rtf/control_words.h"

#include <algorithm>

namespace pxscheduler {

std::int32_t Parameter::Length() const {
  constexpr std::int32_t kLargestPage = 31680;  // 22 inches
  return std::clamp(Number(), -kLargestPage, kLargestPage);
}

Colour Grey(std::int32_t hundredths_of_percent) {
  const auto level =
      static_cast<std::uint32_t>(255 - std::clamp(hundredths_of_percent, 0, 10000) * 255 / 10000);
  return level << 16 | level << 8 | level;
}

}  // namespace pxscheduler
