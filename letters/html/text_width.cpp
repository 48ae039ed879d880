#include "letters/html/text_width.h"

namespace pxscheduler {

std::int64_t RoughWidth(wchar_t character) {
  if (std::wstring_view(L" .,:;'!|ijltfIr()[]\u00A0").find(character) != std::wstring_view::npos)
    return 28;
  if (character >= L'A' && character <= L'Z') return 67;
  return character >= 0x2E80 ? 100 : 50;
}

std::int64_t RoughWidth(std::wstring_view text, std::uint16_t half_points) {
  std::int64_t width = 0;
  for (const wchar_t character : text) width += RoughWidth(character);
  return width * half_points / 10;
}

}  // namespace pxscheduler
